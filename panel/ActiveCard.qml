// SPDX-License-Identifier: MIT
import QtQuick
import Vantle.Look
import Vantle.Panel

// The Boost app, and in three figures what the Boost does.
Card {
    id: card

    required property PanelModel panel

    verticalPadding: 12
    spacing: 12

    Item {
        width: parent.width
        height: 40

        RoundedBox {
            id: tile
            width: 40
            height: 40
            radius: 10
            color: Look.accent

            Symbol {
                anchors.centerIn: parent
                width: 22
                height: 22
                name: "bolt.fill"
                color: "white"
            }
        }
        NameText {
            anchors.left: tile.right
            anchors.leftMargin: 10
            anchors.right: parent.right
            y: 1
            text: card.panel.gameName
            font.pixelSize: 15
            font.bold: true
            Accessible.role: Accessible.Heading
        }
        StatusLine {
            anchors.left: tile.right
            anchors.leftMargin: 10
            anchors.right: parent.right
            anchors.bottom: parent.bottom
            anchors.bottomMargin: 1
            color: Look.green
            text: qsTr("Boost on")
        }
    }
    Item {
        id: stats

        readonly property real narrow: Math.round(width * 0.31) // the last label is the longest

        width: parent.width
        height: 40

        Stat {
            width: stats.narrow
            value: String(card.panel.usage.length)
            label: qsTr("in background")
        }
        Divider {
            x: stats.narrow
            y: 4
            height: parent.height - 8
        }
        Stat {
            x: stats.narrow
            width: stats.narrow
            value: String(card.panel.protectedNames.length)
            label: qsTr("protected")
            details: card.panel.leftAlone
        }
        Divider {
            x: 2 * stats.narrow
            y: 4
            height: parent.height - 8
        }
        Stat {
            x: 2 * stats.narrow
            width: stats.width - x
            value: card.panel.pressureWord
            label: qsTr("memory pressure")
        }
    }
}
