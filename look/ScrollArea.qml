// SPDX-License-Identifier: MIT
import QtQuick
import Vantle.Look

// Content that may be higher than its place: scrolled by wheel, touch or keyboard, with a slim bar while there
// is more to see. What gets the keyboard focus is brought into view.
Flickable {
    id: area

    readonly property bool overflows: contentHeight > height + 0.5

    function reveal(item) {
        const top = item.mapToItem(contentItem, 0, 0).y - 4;
        const bottom = top + item.height + 8;
        if (top < contentY)
            contentY = Math.max(0, top);
        else if (bottom > contentY + height)
            contentY = Math.min(contentHeight - height, bottom - height);
    }
    function holds(item) {
        for (let each = item; each; each = each.parent)
            if (each === contentItem)
                return true;
        return false;
    }

    clip: overflows
    interactive: overflows
    boundsBehavior: Flickable.StopAtBounds
    contentWidth: width

    Connections {
        target: area.Window.window
        function onActiveFocusItemChanged() {
            const item = area.Window.activeFocusItem;
            if (item && area.overflows && area.holds(item))
                area.reveal(item);
        }
    }
    ScrollMark {
        parent: area
        area: area
        anchors.right: parent.right
        anchors.rightMargin: 1
    }
}
