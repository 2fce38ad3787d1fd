// SPDX-License-Identifier: MIT
import QtQuick
import Vantle.Look

// An ordinary button, as wide as its text; filled with the accent when it is the one to press.
Pressable {
    id: button

    property string text
    property bool prominent

    label: text
    implicitWidth: words.implicitWidth + 28
    implicitHeight: 28
    ringRadius: 7
    opacity: !enabled ? 0.45 : pressed ? 0.75 : 1

    RoundedBox {
        anchors.fill: parent
        radius: 7
        color: button.prominent ? Look.accentUnderText : Look.faded(Look.primary, button.hovered ? 0.12 : 0.08)
    }
    Words {
        id: words
        anchors.fill: parent
        horizontalAlignment: Text.AlignHCenter
        text: button.text
        color: button.prominent ? "white" : Look.primary
        font.weight: button.prominent ? Font.DemiBold : Font.Normal
        Accessible.ignored: true
    }
}
