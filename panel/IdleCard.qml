// SPDX-License-Identifier: MIT
import QtQuick
import Vantle.Look

Card {
    verticalPadding: 12
    spacing: 5

    Words {
        width: parent.width
        text: qsTr("Ready to boost")
        font.pixelSize: 17
        font.bold: true
        Accessible.role: Accessible.Heading
    }
    Words {
        width: parent.width
        text: qsTr("Starts on its own for games and any app you add, like your editor.")
        font.pixelSize: 12
        color: Look.secondary
        wrapMode: Text.Wrap
    }
    Item {
        width: 1
        height: 1
    }
    StatusLine {
        width: parent.width
        color: Look.tertiary
        text: qsTr("Boost off")
    }
}
