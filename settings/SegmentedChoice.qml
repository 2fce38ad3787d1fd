// SPDX-License-Identifier: MIT
import QtQuick
import Vantle.Look

// A choice of one among a few, side by side.
RovingGroup {
    id: group

    property var choices
    readonly property real part: (width - 4) / Math.max(1, count)

    height: 28
    padding: 2
    count: segments.count
    itemAt: index => segments.itemAt(index)
    Accessible.role: Accessible.Grouping

    Repeater {
        id: segments
        model: group.choices

        Pressable {
            id: segment

            required property int index
            required property string modelData

            width: group.part
            height: 24
            ringRadius: 6
            label: modelData
            checkable: true
            checked: index === group.current
            activeFocusOnTab: checked
            onTriggered: group.choose(index)
            Accessible.role: Accessible.RadioButton

            // The trough is drawn by its segments: a positioner would take a ground of its own for one of them.
            RoundedBox {
                parent: group.parent
                visible: segment.index === 0
                x: group.x
                y: group.y
                z: group.z - 1
                width: group.width
                height: group.height
                radius: 8
                color: Look.faded(Look.primary, 0.08)
            }
            RoundedBox {
                anchors.fill: parent
                radius: 6
                visible: segment.checked
                color: Look.accentUnderText
                opacity: segment.pressed ? 0.75 : 1
            }
            Words {
                anchors.fill: parent
                horizontalAlignment: Text.AlignHCenter
                text: segment.modelData
                color: segment.checked ? "white" : Look.primary
                Accessible.ignored: true
            }
        }
    }
}
