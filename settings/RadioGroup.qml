// SPDX-License-Identifier: MIT
import QtQuick
import Vantle.Look

// A choice of one among a few, each on a line of its own.
RovingGroup {
    id: group

    property var choices

    width: parent ? parent.width : 0
    topPadding: 6
    bottomPadding: 6
    count: buttons.count
    itemAt: index => buttons.itemAt(index)
    Accessible.role: Accessible.Grouping

    Repeater {
        id: buttons
        model: group.choices

        Pressable {
            id: button

            required property int index
            required property string modelData

            width: group.width
            implicitHeight: Math.max(30, words.implicitHeight + 8)
            label: modelData
            checkable: true
            checked: index === group.current
            activeFocusOnTab: checked
            ringGap: -1
            ringSideGap: 7
            onTriggered: group.choose(index)
            Accessible.role: Accessible.RadioButton

            RoundedBox {
                id: mark
                width: 16
                height: 16
                radius: 8
                anchors.verticalCenter: parent.verticalCenter
                color: button.checked ? Look.accent : "transparent"
                edgeColor: button.checked ? Look.accentOutline : Look.outline
                edgeWidth: 1.5
                opacity: button.pressed ? 0.7 : 1

                RoundedBox {
                    anchors.centerIn: parent
                    width: 6
                    height: 6
                    radius: 3
                    color: button.checked ? "white" : "transparent"
                }
            }
            Words {
                id: words
                anchors.left: mark.right
                anchors.leftMargin: 8
                anchors.right: parent.right
                height: parent.height
                text: button.modelData
                wrapMode: Text.Wrap
                Accessible.ignored: true
            }
        }
    }
}
