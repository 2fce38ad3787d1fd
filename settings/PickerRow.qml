// SPDX-License-Identifier: MIT
import QtQuick
import Vantle.Look

// One app or folder to choose: a click chooses it, a double click takes it.
Item {
    id: row

    required property int index
    required property string name
    required property string icon
    required property bool isFolder
    property bool current

    signal chosen
    signal activated

    height: 34
    Accessible.role: Accessible.ListItem
    Accessible.name: isFolder ? qsTr("%1, folder").arg(name) : name
    Accessible.selectable: true
    Accessible.selected: current
    Accessible.onPressAction: chosen()

    RoundedBox {
        anchors.fill: parent
        radius: 6
        color: row.current ? Look.accentUnderText : pointer.containsMouse ? Look.faded(Look.primary, 0.05) : "transparent"
    }
    AppImage {
        id: picture
        x: 8
        anchors.verticalCenter: parent.verticalCenter
        width: 20
        height: 20
        source: row.icon
        isApp: !row.isFolder

        // Stands in for the picture of an app that has none.
        RoundedBox {
            anchors.fill: parent
            visible: !picture.found && !row.isFolder
            radius: 5
            color: Look.faded(row.current ? "white" : Look.secondary, 0.25)
        }
        Symbol {
            anchors.centerIn: parent
            visible: !picture.found && row.isFolder
            width: 14
            height: 14
            name: "chevron.right"
            color: row.current ? "white" : Look.secondary
        }
    }
    NameText {
        anchors.left: picture.right
        anchors.leftMargin: 10
        anchors.right: parent.right
        anchors.rightMargin: 8
        height: parent.height
        text: row.name
        color: row.current ? "white" : Look.primary
        Accessible.ignored: true
    }
    MouseArea {
        id: pointer
        anchors.fill: parent
        hoverEnabled: true
        onClicked: row.chosen()
        onDoubleClicked: row.activated()
    }
}
