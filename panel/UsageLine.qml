// SPDX-License-Identifier: MIT
import QtQuick
import Vantle.Look

// One app in the background.
Item {
    id: line

    required property int pid
    required property string icon
    required property string name
    required property string memory

    implicitHeight: 34
    Accessible.role: Accessible.ListItem
    Accessible.name: name + ", " + memory
    Accessible.focusable: true
    Accessible.focused: activeFocus

    FocusRing {
        radius: 8
        gap: 0
    }
    AppIcon {
        id: picture
        x: 8
        anchors.verticalCenter: parent.verticalCenter
        pid: line.pid
        source: line.icon
    }
    NameText {
        anchors.left: picture.right
        anchors.leftMargin: 10
        anchors.right: amount.left
        anchors.rightMargin: 10
        height: parent.height
        text: line.name
        font.pixelSize: 13
    }
    Figures {
        id: amount
        anchors.right: parent.right
        anchors.rightMargin: 8
        height: parent.height
        text: line.memory
        pixelSize: 12
        color: Look.secondary
    }
}
