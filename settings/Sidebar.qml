// SPDX-License-Identifier: MIT
import QtQuick
import Vantle.Look
import Vantle.Settings

// The list of panes, by their symbols alone where there is no room for more. One stop for the Tab key; the arrows
// move in it.
Item {
    id: sidebar

    required property SettingsModel model
    property bool isNarrow: false
    property real wantedWidth: 190
    readonly property real margin: isNarrow ? 4 : 10

    width: isNarrow ? 44 : wantedWidth

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
            x: sidebar.margin
            y: 10
            width: parent.width - 2 * sidebar.margin
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
                    isNarrow: sidebar.isNarrow
                    onTriggered: rows.choose(index)
                }
            }
        }
    }
}
