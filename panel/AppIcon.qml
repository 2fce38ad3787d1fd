// SPDX-License-Identifier: MIT
import QtQuick
import Vantle.Look

// The icon of a running app, or a faint box when there is none.
Item {
    id: icon

    required property int pid
    property alias source: picture.source
    property alias isRunning: picture.isApp

    implicitWidth: 20
    implicitHeight: 20

    RoundedBox {
        anchors.fill: parent
        radius: 5
        visible: !picture.found
        color: Look.faded(Look.secondary, 0.25)
    }
    AppImage {
        id: picture
        anchors.fill: parent
    }
}
