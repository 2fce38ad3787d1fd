// SPDX-License-Identifier: MIT
import QtQuick
import Vantle.Look
import Vantle.Panel

// The apps in the background with their memory. One stop for Tab; the arrow keys go through its lines, as do
// Home, End, Page Up and Page Down, and letters go to the line that begins with them.
Column {
    id: list

    required property PanelModel panel

    signal menuWanted(Item line, real x) // there, in the line

    spacing: 4

    Item {
        width: parent.width
        height: title.implicitHeight

        SectionTitle {
            id: title
            x: 4
            text: qsTr("In background")
        }
        SectionTitle {
            anchors.right: parent.right
            anchors.rightMargin: 4
            text: qsTr("Memory")
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
            text: qsTr("No apps in the background right now.")
            color: Look.secondary
        }
        FocusScope {
            id: lines

            property int current: 0
            property int currentPid: 0

            function goTo(index) {
                if (repeater.count === 0)
                    return;
                const place = Math.max(0, Math.min(index, repeater.count - 1));
                repeater.itemAt(place).forceActiveFocus(Qt.TabFocusReason); // first: see RovingGroup
                current = place;
            }
            // The lines are made anew whenever the apps are looked at: the keyboard stays with its app.
            function settle() {
                const place = list.panel.usage.findIndex(row => row.pid === currentPid);
                current = Math.max(0, Math.min(place < 0 ? current : place, repeater.count - 1));
                if (activeFocus)
                    goTo(current);
            }

            function resume() {
                settle();
                goTo(current);
            }

            width: parent.width
            height: 34 * repeater.count
            visible: repeater.count > 0
            Accessible.role: Accessible.List
            Accessible.name: qsTr("In background")
            Keys.onPressed: event => keys.handle(event)

            ListKeys {
                id: keys
                count: repeater.count
                current: lines.current
                nameAt: index => list.panel.usage[index].name
                onWanted: index => lines.goTo(index)
            }
            Repeater {
                id: repeater
                model: list.panel.usage
                onModelChanged: Qt.callLater(lines.settle)

                UsageLine {
                    id: line

                    required property int index
                    required property var modelData

                    y: 34 * index
                    width: lines.width
                    pid: modelData.pid
                    icon: list.panel.iconOf(modelData.pid)
                    isRunning: list.panel.isRunning(modelData.pid)
                    name: modelData.name
                    memory: modelData.memory
                    activeFocusOnTab: index === lines.current
                    onActiveFocusChanged: {
                        if (activeFocus)
                            lines.currentPid = pid;
                    }
                    onMenuWanted: x => list.menuWanted(line, x)
                }
            }
        }
    }
}
