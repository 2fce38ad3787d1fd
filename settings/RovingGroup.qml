// SPDX-License-Identifier: MIT
import QtQuick

// Choices of which one is taken: a single stop for the Tab key, in which the arrows, Home and End move the
// choice and the keyboard's place together.
Flow {
    id: group

    property int count
    property int current
    property var itemAt // (index) => item
    property int rowLength: 1 // how many stand side by side

    signal chosen(int index)

    function move(index) {
        if (index >= 0 && index < count)
            choose(index);
    }
    // The keyboard goes first: an item that has it cannot cease to be a stop for the Tab key.
    function choose(index) {
        if (itemAt(current)?.activeFocus)
            itemAt(index).forceActiveFocus(Qt.TabFocusReason);
        chosen(index);
    }

    Keys.onUpPressed: move(current - rowLength)
    Keys.onDownPressed: move(current + rowLength)
    Keys.onLeftPressed: move(current - 1)
    Keys.onRightPressed: move(current + 1)
    Keys.onPressed: event => {
        if (event.key !== Qt.Key_Home && event.key !== Qt.Key_End)
            return;
        move(event.key === Qt.Key_Home ? 0 : count - 1);
        event.accepted = true;
    }
}
