// SPDX-License-Identifier: MIT
import QtQuick
import Vantle.Look
import Vantle.Settings

// A switch whose text is followed by a note of lesser weight, or stands over it where there is no room beside it.
SwitchRow {
    id: rule

    property string title
    property string note
    readonly property real room: width - 48
    readonly property bool isTight: titleWords.implicitWidth + 8 + noteWords.implicitWidth > room

    label: title + ", " + note
    implicitHeight: isTight ? titleWords.implicitHeight + noteWords.implicitHeight + 12 : 40

    Words {
        id: titleWords
        y: rule.isTight ? 6 : 0
        width: rule.isTight ? rule.room : implicitWidth
        height: rule.isTight ? implicitHeight : parent.height
        text: rule.title
        wrapMode: Text.Wrap
        Accessible.ignored: true
    }
    Words {
        id: noteWords
        x: rule.isTight ? 0 : titleWords.width + 8
        y: rule.isTight ? titleWords.y + titleWords.height : 0
        width: rule.isTight ? rule.room : implicitWidth
        height: rule.isTight ? implicitHeight : parent.height
        text: rule.note
        color: Look.secondary
        Accessible.ignored: true
    }
}
