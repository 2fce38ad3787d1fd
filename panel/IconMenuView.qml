// SPDX-License-Identifier: MIT
import QtQuick
import Vantle.Look

// The tray icon's menu: lines to choose, lines that only say something, and lines between them.
FocusScope {
    id: menu

    property var lines: [] // {place, text, canBeChosen, isSwitch, isChecked}, without a text between two others
    property alias radius: sheet.radius
    property real widest: 0 // of the lines

    signal chosen(int place)

    function settle() {
        sheet.settle();
    }
    function enter() {
        sheet.enter();
    }

    implicitWidth: sheet.width
    implicitHeight: sheet.height
    focus: true

    MenuSheet {
        id: sheet
        name: "Vantle"
        width: Math.min(360, Math.max(180, menu.widest + 8))

        Repeater {
            model: menu.lines
            onItemAdded: (index, item) => menu.widest = Math.max(menu.widest, item.implicitWidth)
            onItemRemoved: menu.widest = 0 // all of them go at once

            Item {
                id: place

                required property var modelData
                readonly property MenuLine line: choice

                width: parent ? parent.width : 0
                implicitWidth: choice.visible ? choice.implicitWidth : 0
                implicitHeight: choice.visible ? choice.implicitHeight : 9

                MenuLine {
                    id: choice
                    visible: text !== ""
                    enabled: place.modelData.canBeChosen
                    text: place.modelData.text
                    indent: 20
                    checkable: place.modelData.isSwitch
                    checked: place.modelData.isChecked
                    onTriggered: menu.chosen(place.modelData.place)
                }
                Divider {
                    anchors.verticalCenter: parent.verticalCenter
                    visible: !choice.visible
                    width: parent.width
                }
            }
        }
    }
}
