// SPDX-License-Identifier: MIT
import QtQuick
import Vantle.Look
import Vantle.Panel

// What the panel shows while a Boost app is running.
Column {
    id: part

    required property PanelModel panel

    signal menuWanted(Item line, real x)

    ActiveCard {
        width: parent.width
        panel: part.panel
    }
    BackgroundList {
        width: parent.width
        panel: part.panel
        onMenuWanted: (line, x) => part.menuWanted(line, x)
    }
    Column {
        width: parent.width
        spacing: 6
        visible: part.panel.protectedNames.length > 0

        SectionTitle {
            width: parent.width
            text: qsTr("Not touched")
        }
        FlowRow {
            x: 8
            width: parent.width - 16
            items: part.panel.protectedNames
        }
    }
}
