// SPDX-License-Identifier: MIT
import QtQuick
import Vantle.Look
import Vantle.Panel

// The machine's memory pressure and what Vantle itself uses.
Card {
    id: card

    required property PanelModel panel

    horizontalPadding: 12

    Fact {
        width: parent.width
        title: qsTr("Memory pressure")
        value: card.panel.pressureWord
        valueColor: [Look.green, Look.orange, Look.red][card.panel.pressure]
    }
    Divider {
        width: parent.width
    }
    Fact {
        width: parent.width
        title: qsTr("Vantle itself")
        value: card.panel.ownMemory
        valueColor: Look.secondary
    }
}
