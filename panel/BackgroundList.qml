// SPDX-License-Identifier: MIT
import QtQuick
import Vantle.Look
import Vantle.Panel

// The apps in the background with their memory. One stop for Tab; the arrow keys go through its lines.
Column {
    id: list

    required property PanelModel panel

    spacing: 4

    Item {
        width: parent.width
        height: title.implicitHeight

        SectionTitle {
            id: title
            text: "In background"
        }
        SectionTitle {
            anchors.right: parent.right
            text: "Memory"
        }
    }
    Card {
        width: parent.width
        horizontalPadding: 4
        verticalPadding: 4

        Words {
            x: 8
            width: parent.width - 16
            height: 34
            visible: list.panel.usage.length === 0
            text: "No apps in the background right now."
            color: Look.secondary
        }
        FocusScope {
            id: lines

            property int current: 0

            function step(by) {
                const next = current + by;
                if (next < 0 || next >= repeater.count)
                    return;
                repeater.itemAt(next).forceActiveFocus();
                current = next;
            }

            width: parent.width
            height: 34 * repeater.count
            visible: repeater.count > 0
            Accessible.role: Accessible.List
            Accessible.name: "In background"
            Keys.onUpPressed: step(-1)
            Keys.onDownPressed: step(1)

            Repeater {
                id: repeater
                model: list.panel.usage
                onCountChanged: lines.current = Math.max(0, Math.min(lines.current, count - 1))

                UsageLine {
                    required property int index
                    required property var modelData

                    y: 34 * index
                    width: lines.width
                    pid: modelData.pid
                    icon: list.panel.iconOf(modelData.pid)
                    name: modelData.name
                    memory: modelData.memory
                    activeFocusOnTab: index === lines.current
                }
            }
        }
    }
}
