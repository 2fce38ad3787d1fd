// SPDX-License-Identifier: MIT
import QtQuick
import Vantle.Look

// The ground of a small menu, with its lines (MenuLine, or something that names its own) in a column. The arrow
// keys, Home and End go through those that can be chosen.
FocusScope {
    id: sheet

    default property alias lines: column.data
    property string name // whose menu it is, for screen readers
    property real radius: 8

    function shownLines() {
        return Array.from(column.children).map(each => each.line ?? each).filter(each => each.visible && each.enabled && each.trigger);
    }
    // Its size is that of its lines from now on, not only when they are drawn.
    function settle() {
        column.forceLayout();
    }
    function enter() {
        shownLines()[0]?.forceActiveFocus(Qt.PopupFocusReason);
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
    Keys.onPressed: event => {
        if (event.key !== Qt.Key_Home && event.key !== Qt.Key_End)
            return;
        const shown = shownLines();
        shown[event.key === Qt.Key_Home ? 0 : shown.length - 1].forceActiveFocus(Qt.TabFocusReason);
        event.accepted = true;
    }

    RoundedBox {
        anchors.fill: parent
        radius: sheet.radius
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
