// SPDX-License-Identifier: MIT
import QtQuick
import Vantle.Look

// A button that is only its text.
Pressable {
    id: button

    property string text
    property alias color: words.color
    property alias font: words.font

    label: text
    implicitWidth: words.implicitWidth + 12
    implicitHeight: words.implicitHeight + 8
    ringRadius: 6
    opacity: pressed ? 0.6 : 1

    RoundedBox {
        anchors.fill: parent
        radius: 6
        color: Look.faded(Look.primary, 0.06)
        visible: button.hovered
    }
    Words {
        id: words
        anchors.fill: parent
        horizontalAlignment: Text.AlignHCenter
        text: button.text
        Accessible.ignored: true
    }
}
