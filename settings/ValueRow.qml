// SPDX-License-Identifier: MIT
import QtQuick
import Vantle.Look

// A fact: what it is on the left, its value on the right.
Item {
    id: row

    property string title
    property string value

    width: parent ? parent.width : 0
    implicitHeight: 40
    Accessible.role: Accessible.StaticText
    Accessible.name: title + ": " + value

    Words {
        id: titleWords
        height: parent.height
        text: row.title
        Accessible.ignored: true
    }
    Words {
        anchors.left: titleWords.right
        anchors.leftMargin: 16
        anchors.right: parent.right
        height: parent.height
        horizontalAlignment: Text.AlignRight
        text: row.value
        color: Look.secondary
        Accessible.ignored: true
    }
}
