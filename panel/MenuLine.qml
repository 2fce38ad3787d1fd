// SPDX-License-Identifier: MIT
import QtQuick
import Vantle.Look

// A line of a small menu.
Pressable {
    id: line

    property string text

    width: parent ? parent.width : 0
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
        width: parent.width - 20
        height: parent.height
        text: line.text
        Accessible.ignored: true
    }
}
