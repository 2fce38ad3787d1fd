// SPDX-License-Identifier: MIT
import QtQuick
import Vantle.Look
import Vantle.Settings

// The dialog over the window in which one app is picked. Escape leaves it; the keyboard starts in the search.
FocusScope {
    id: dialog

    required property AppPickerModel model

    focus: true
    Accessible.role: Accessible.Dialog
    Accessible.name: title.text
    Keys.onEscapePressed: model.cancel()
    Component.onCompleted: search.forceActiveFocus(Qt.TabFocusReason)

    Rectangle {
        anchors.fill: parent
        color: Qt.rgba(0, 0, 0, Look.dark ? 0.5 : 0.25)
    }
    // What is behind the dialog hears no pointer.
    MouseArea {
        anchors.fill: parent
        hoverEnabled: true
        onWheel: wheel => wheel.accepted = true
    }
    RoundedBox {
        id: sheet
        anchors.centerIn: parent
        readonly property real margin: width < 440 ? 8 : 20

        width: Math.min(440, parent.width - 16)
        height: Math.min(480, parent.height - (width < 440 ? 16 : 40))
        radius: 12
        color: Look.surface
        edgeColor: Look.divider

        MouseArea {
            anchors.fill: parent
        }
        Words {
            id: title
            x: sheet.margin
            y: 16
            text: qsTr("Add App")
            font.pixelSize: 15
            font.weight: Font.DemiBold
            Accessible.role: Accessible.Heading
        }
        Words {
            anchors.left: title.right
            anchors.leftMargin: 16
            anchors.right: parent.right
            anchors.rightMargin: sheet.margin
            anchors.baseline: title.baseline
            horizontalAlignment: Text.AlignRight
            visible: dialog.model.browsing
            text: dialog.model.folder
            elide: Text.ElideMiddle
            font.pixelSize: 12
            color: Look.secondary
        }
        SearchField {
            id: search
            anchors.top: title.bottom
            anchors.topMargin: 12
            x: sheet.margin
            width: parent.width - 2 * sheet.margin
            text: dialog.model.search
            placeholder: dialog.model.browsing ? qsTr("Search this folder") : qsTr("Search installed apps")
            onEdited: text => dialog.model.search = text
            onStep: rows => dialog.model.step(rows)
            onAccepted: dialog.model.activate(dialog.model.current)
        }
        PickerList {
            anchors.top: search.bottom
            anchors.topMargin: 10
            anchors.bottom: buttons.top
            anchors.bottomMargin: 12
            x: sheet.margin
            width: parent.width - 2 * sheet.margin
            model: dialog.model
        }
        Item {
            id: buttons
            anchors.bottom: parent.bottom
            anchors.bottomMargin: 16
            x: sheet.margin
            width: parent.width - 2 * sheet.margin
            height: 28

            PushButton {
                text: dialog.model.browsing ? qsTr("Installed Apps") : qsTr("Other…")
                help: dialog.model.browsing ? "" : qsTr("Choose an app or a program in any folder")
                onTriggered: dialog.model.browsing ? dialog.model.showInstalled() : dialog.model.browse()
            }
            Row {
                anchors.right: parent.right
                spacing: 8

                PushButton {
                    text: qsTr("Cancel")
                    onTriggered: dialog.model.cancel()
                }
                PushButton {
                    text: qsTr("Add")
                    prominent: true
                    enabled: dialog.model.canAdd
                    onTriggered: dialog.model.add()
                }
            }
        }
    }
}
