// SPDX-License-Identifier: MIT
import QtQuick
import Vantle.Look

// A line of a small menu.
Pressable {
    id: line

    property string text
    property real indent: 0 // room for a mark before the text

    width: parent ? parent.width : 0
    implicitWidth: words.implicitWidth + 20 + indent
    implicitHeight: 30
    label: text
    ringRadius: 5
    ringGap: 0
    Accessible.role: Accessible.MenuItem

    RoundedBox {
        anchors.fill: parent
        radius: 5
        color: Look.faded(Look.primary, line.hovered || line.activeFocus ? 0.1 : 0)
    }
    Words {
        x: 10
        height: parent.height
        visible: line.checked
        text: "\u2713"
        Accessible.ignored: true
    }
    Words {
        id: words
        x: 10 + line.indent
        width: parent.width - x - 10
        height: parent.height
        text: line.text
        color: line.enabled ? Look.primary : Look.secondary
        Accessible.ignored: true
    }
}
