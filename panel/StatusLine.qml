// SPDX-License-Identifier: MIT
import QtQuick
import Vantle.Look

// A dot and what it stands for.
Item {
    id: line

    required property color color
    required property string text

    implicitHeight: words.implicitHeight
    implicitWidth: words.x + words.implicitWidth

    RoundedBox {
        anchors.verticalCenter: parent.verticalCenter
        width: 7
        height: 7
        radius: 3.5
        color: line.color
    }
    Words {
        id: words
        x: 13
        width: parent.width - x
        text: line.text
        color: Look.secondary
    }
}
