// SPDX-License-Identifier: MIT
import QtQuick
import Vantle.Look

// A title and its value.
Item {
    id: row

    required property string title
    required property string value
    required property color valueColor

    implicitHeight: 40

    Words {
        height: parent.height
        text: row.title
    }
    Figures {
        anchors.right: parent.right
        height: parent.height
        text: row.value
        color: row.valueColor
    }
}
