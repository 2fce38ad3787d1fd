// SPDX-License-Identifier: MIT
import QtQuick
import Vantle.Look

// Settings that belong together: a header, a card with one row each, a footer. Header and footer may be empty.
Column {
    id: section

    default property alias rows: card.content
    property string header
    property string footer

    width: parent ? parent.width : 0
    spacing: 7
    Accessible.role: Accessible.Grouping
    Accessible.name: header

    Words {
        visible: section.header !== ""
        x: 12
        width: parent.width - 24
        text: section.header
        font.weight: Font.DemiBold
        wrapMode: Text.Wrap
    }
    Card {
        id: card
        width: parent.width
    }
    Words {
        visible: section.footer !== ""
        x: 12
        width: parent.width - 24
        text: section.footer
        color: Look.secondary
        font.pixelSize: 12
        lineHeight: 1.15
        wrapMode: Text.Wrap
    }
}
