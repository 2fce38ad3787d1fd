// SPDX-License-Identifier: MIT
import QtQuick
import Vantle.Look
import Vantle.Settings

// A switch whose text is followed by a note of lesser weight.
SwitchRow {
    id: rule

    property string title
    property string note

    label: title + ", " + note

    Words {
        id: titleWords
        width: Math.min(implicitWidth, rule.width - 56 - noteWords.implicitWidth)
        height: parent.height
        text: rule.title
        Accessible.ignored: true
    }
    Words {
        id: noteWords
        anchors.left: titleWords.right
        anchors.leftMargin: 8
        height: parent.height
        text: rule.note
        color: Look.secondary
        Accessible.ignored: true
    }
}
