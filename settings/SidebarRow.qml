// SPDX-License-Identifier: MIT
import QtQuick
import Vantle.Look

// One pane's name and symbol in the sidebar, filled with the accent while its pane is shown.
Pressable {
    id: row

    property string title
    property string symbol
    property bool selected
    property bool isNarrow: false // only the symbol
    property color color: Look.accent
    readonly property color ink: selected ? "white" : Look.primary

    label: title
    tip: isNarrow ? title : ""
    ringRadius: 8
    ringGap: 0
    implicitHeight: words.implicitHeight + 12
    activeFocusOnTab: selected
    opacity: pressed ? 0.75 : 1
    Accessible.role: Accessible.PageTab
    Accessible.selectable: true
    Accessible.selected: selected
    Accessible.onPressAction: trigger() // the role has none of its own

    RoundedBox {
        anchors.fill: parent
        radius: 8
        color: row.selected ? row.color : row.hovered ? Look.faded(Look.primary, 0.05) : "transparent"
    }
    Symbol {
        id: picture
        x: 10
        width: 16
        height: 16
        anchors.verticalCenter: parent.verticalCenter
        name: row.symbol
        color: row.ink
    }
    Words {
        id: words
        visible: !row.isNarrow
        anchors.left: picture.right
        anchors.leftMargin: 8
        anchors.right: parent.right
        anchors.rightMargin: 10
        height: parent.height
        text: row.title
        color: row.ink
        Accessible.ignored: true
    }
}
