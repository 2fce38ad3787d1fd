// SPDX-License-Identifier: MIT
import QtQuick
import Vantle.Look

// A slim bar at the edge of something that scrolls: where in it one is, while there is more to see.
RoundedBox {
    id: mark

    required property Flickable area

    visible: area.visibleArea.heightRatio < 0.999
    width: 4
    radius: 2
    y: area.visibleArea.yPosition * area.height
    height: Math.max(24, area.visibleArea.heightRatio * area.height)
    color: Look.faded(Look.primary, 0.25)
}
