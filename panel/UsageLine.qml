// SPDX-License-Identifier: MIT
import QtQuick
import Vantle.Look

// One app in the background. The right button, the menu key, Enter or Space ask for what can be done with it.
Item {
    id: line

    required property int pid
    required property string icon
    required property bool isRunning
    required property string name
    required property string memory

    signal menuWanted(real x)

    function trigger() {
        menuWanted(30);
    }

    implicitHeight: 34
    Accessible.role: Accessible.ListItem
    Accessible.name: name + ", " + memory
    Accessible.focusable: true
    Accessible.focused: activeFocus
    Accessible.onPressAction: trigger()
    Keys.onMenuPressed: trigger()
    Keys.onReturnPressed: trigger()
    Keys.onEnterPressed: trigger()
    Keys.onPressed: event => {
        const isMenu = event.key === Qt.Key_F10 && event.modifiers & Qt.ShiftModifier;
        if (!isMenu && event.key !== Qt.Key_Space)
            return;
        trigger();
        event.accepted = true;
    }

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
        isRunning: line.isRunning
    }
    NameText {
        anchors.left: picture.right
        anchors.leftMargin: 10
        anchors.right: amount.left
        anchors.rightMargin: 10
        height: parent.height
        text: line.name
        font.pixelSize: 13
        Accessible.ignored: true
    }
    Figures {
        id: amount
        anchors.right: parent.right
        anchors.rightMargin: 8
        height: parent.height
        text: line.memory
        pixelSize: 12
        color: Look.secondary
        Accessible.ignored: true
    }
    MouseArea {
        anchors.fill: parent
        acceptedButtons: Qt.RightButton
        onPressed: mouse => line.menuWanted(mouse.x)
    }
}
