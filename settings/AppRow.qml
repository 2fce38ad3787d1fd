// SPDX-License-Identifier: MIT
import QtQuick
import Vantle.Look

// One app of a list, with the button that takes it off.
Item {
    id: row

    required property string name
    required property string icon
    property bool isStop // for the Tab key
    readonly property alias removeButton: button

    signal removeWanted(bool hadFocus)
    signal entered // by the keyboard

    height: 34
    Accessible.role: Accessible.ListItem
    Accessible.name: name

    AppImage {
        id: picture
        anchors.verticalCenter: parent.verticalCenter
        width: found ? 20 : 0
        height: 20
        source: row.icon
        isApp: true
    }
    NameText {
        anchors.left: picture.right
        anchors.leftMargin: picture.found ? 8 : 0
        anchors.right: button.left
        anchors.rightMargin: 8
        height: parent.height
        text: row.name
        Accessible.ignored: true
    }
    SymbolButton {
        id: button
        anchors.right: parent.right
        anchors.rightMargin: -6
        anchors.verticalCenter: parent.verticalCenter
        symbol: "minus.circle.fill"
        color: Look.secondary
        help: qsTr("Remove")
        label: qsTr("Remove %1").arg(row.name)
        // What has the keyboard cannot cease to be a stop for the Tab key: its row may be on its way out.
        activeFocusOnTab: row.isStop || activeFocus
        onActiveFocusChanged: {
            if (activeFocus)
                row.entered();
        }
        onTriggered: row.removeWanted(activeFocus)
    }
    Divider {
        anchors.bottom: parent.bottom
        width: parent.width
    }
}
