// SPDX-License-Identifier: MIT
import QtQuick
import Vantle.Look

// The ground of a small menu, with its lines (MenuLine) in a column. The arrow keys go through them.
FocusScope {
    id: sheet

    default property alias lines: column.data
    property string name // whose menu it is, for screen readers

    function shownLines() {
        return Array.from(column.children).filter(each => each.visible);
    }
    function enter() {
        shownLines()[0].forceActiveFocus(Qt.PopupFocusReason);
    }
    function step(by) {
        const shown = shownLines();
        const place = shown.findIndex(each => each.activeFocus) + by;
        shown[(place + shown.length) % shown.length].forceActiveFocus(Qt.TabFocusReason);
    }

    width: 180
    height: column.height + 8
    focus: true
    Accessible.role: Accessible.PopupMenu
    Accessible.name: name
    Keys.onUpPressed: step(-1)
    Keys.onDownPressed: step(1)

    RoundedBox {
        anchors.fill: parent
        radius: 8
        color: Look.control
        edgeColor: Look.tertiary
    }
    Column {
        id: column
        x: 4
        y: 4
        width: parent.width - 8
    }
}
