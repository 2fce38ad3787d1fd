// SPDX-License-Identifier: MIT
import QtQuick
import Vantle.Look

// A fact: what it is on the left, its value on the right, or below it where there is no room beside it.
Item {
    id: row

    property string title
    property string value
    readonly property bool isTight: titleWords.implicitWidth + 16 + valueWords.implicitWidth > width

    width: parent ? parent.width : 0
    implicitHeight: isTight ? titleWords.implicitHeight + valueWords.implicitHeight + 14 : 40
    Accessible.role: Accessible.StaticText
    Accessible.name: title + ": " + value

    Words {
        id: titleWords
        y: row.isTight ? 7 : 0
        width: row.isTight ? row.width : implicitWidth
        height: row.isTight ? implicitHeight : parent.height
        text: row.title
        wrapMode: Text.Wrap
        Accessible.ignored: true
    }
    Words {
        id: valueWords
        y: row.isTight ? titleWords.y + titleWords.height : 0
        anchors.right: parent.right
        width: row.isTight ? row.width : implicitWidth
        height: row.isTight ? implicitHeight : parent.height
        horizontalAlignment: row.isTight ? Text.AlignLeft : Text.AlignRight
        text: row.value
        color: Look.secondary
        Accessible.ignored: true
    }
}
