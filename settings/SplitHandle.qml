// SPDX-License-Identifier: MIT
import QtQuick
import Vantle.Look

// The line between sidebar and pane, which the pointer can take along.
MouseArea {
    id: handle

    signal dragged(real position) // where the pointer wants the line, in the parent's coordinates

    width: 9
    cursorShape: Qt.SplitHCursor
    onPositionChanged: mouse => {
        if (pressed)
            dragged(mapToItem(parent, mouse.x, 0).x);
    }

    Divider {
        anchors.horizontalCenter: parent.horizontalCenter
        height: parent.height
    }
}
