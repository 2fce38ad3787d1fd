// SPDX-License-Identifier: MIT
import QtQuick
import Vantle.Look

// What an area has that is higher than its place: how the pointer scrolls it, its bar, and a line where its
// content goes on beyond an edge.
Item {
    id: tools

    required property Flickable area

    anchors.fill: parent

    Scrolling {
        area: tools.area
    }
    ScrollMark {
        area: tools.area
        anchors.right: parent.right
    }
    Divider {
        visible: tools.area.contentY > 0.5
        width: parent.width
    }
    Divider {
        anchors.bottom: parent.bottom
        visible: tools.area.contentY < tools.area.contentHeight - tools.area.height - 0.5
        width: parent.width
    }
}
