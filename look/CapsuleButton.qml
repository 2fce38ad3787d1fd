// SPDX-License-Identifier: MIT
import QtQuick
import Vantle.Look

// A button over the full width that is offered: filled with its colour when prominent, faint otherwise.
Pressable {
    id: button

    property string text
    property bool prominent: false
    property color color: Look.accent

    label: text
    tip: words.truncated ? text : ""
    implicitWidth: words.implicitWidth + 32
    implicitHeight: prominent ? 40 : 36
    ringRadius: height / 2
    opacity: pressed ? 0.75 : 1

    RoundedBox {
        anchors.fill: parent
        radius: height / 2
        color: button.prominent ? button.color : Look.faded(Look.primary, button.hovered ? 0.11 : 0.06)
    }
    RoundedBox {
        anchors.fill: parent
        radius: height / 2
        visible: button.prominent && button.hovered
        color: Qt.rgba(0, 0, 0, 0.12)
    }
    Words {
        id: words
        anchors.fill: parent
        anchors.leftMargin: 16
        anchors.rightMargin: 16
        horizontalAlignment: Text.AlignHCenter
        text: button.text
        elide: Text.ElideMiddle
        color: button.prominent ? "white" : Look.primary
        font.pixelSize: button.prominent ? 14 : 13
        font.weight: button.prominent ? Font.DemiBold : Font.Normal
        Accessible.ignored: true
    }
}
