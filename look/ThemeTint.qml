// SPDX-License-Identifier: MIT
import QtQuick
import Vantle.Look

// Fills its area with a colour whose opacity depends on the scheme.
Item {
    id: tint

    property color color: Look.accent
    property real light
    property real dark
    property real radius: 0

    RoundedBox {
        anchors.fill: parent
        radius: tint.radius
        color: Look.faded(tint.color, Look.dark ? tint.dark : tint.light)
    }
}
