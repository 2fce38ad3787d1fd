// SPDX-License-Identifier: MIT
import QtQuick
import Vantle.Look

// One accent to choose: its colour, ringed while it is the current one, over its name.
Pressable {
    id: swatch

    property color color
    property string title
    property bool selected

    label: title
    checkable: true
    checked: selected
    ringRadius: 8
    activeFocusOnTab: selected
    implicitHeight: face.height + 16
    opacity: pressed ? 0.75 : 1
    Accessible.role: Accessible.RadioButton
    Accessible.selectable: true
    Accessible.selected: selected

    Column {
        id: face
        y: 8
        width: parent.width
        spacing: 6

        RoundedBox {
            anchors.horizontalCenter: parent.horizontalCenter
            width: 26
            height: 26
            radius: 13
            color: swatch.color

            RoundedBox {
                anchors.fill: parent
                anchors.margins: -5
                radius: width / 2
                visible: swatch.selected
                edgeWidth: 2
                edgeColor: Look.faded(Look.primary, 0.85)
            }
        }
        Words {
            width: parent.width
            horizontalAlignment: Text.AlignHCenter
            text: swatch.title
            font.pixelSize: 11
            color: swatch.selected ? Look.primary : Look.secondary
            Accessible.ignored: true
        }
    }
}
