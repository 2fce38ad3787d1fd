// SPDX-License-Identifier: MIT
import QtQuick
import Vantle.Look
import Vantle.Settings

// The list of panes. One stop for the Tab key; the arrows move in it.
Item {
    id: sidebar

    required property SettingsModel model

    width: 190

    ThemeTint {
        anchors.fill: parent
        light: 0.16
        dark: 0.24
    }
    ScrollArea {
        anchors.fill: parent
        contentHeight: rows.height + 20

        RovingGroup {
            id: rows
            x: 10
            y: 10
            width: parent.width - 20
            spacing: 2
            count: titles.count
            current: sidebar.model.pane
            itemAt: index => titles.itemAt(index)
            onChosen: index => sidebar.model.pane = index
            Accessible.role: Accessible.PageTabList
            Accessible.name: qsTr("Panes")

            Repeater {
                id: titles
                model: sidebar.model.paneTitles

                SidebarRow {
                    required property int index
                    required property string modelData

                    width: rows.width
                    title: modelData
                    symbol: sidebar.model.paneSymbols[index]
                    selected: index === sidebar.model.pane
                    onTriggered: rows.choose(index)
                }
            }
        }
    }
}
