// SPDX-License-Identifier: MIT
import QtQuick
import Vantle.Look

// Content that may be higher than its place: scrolled by wheel, touch or keyboard, with a slim bar while there
// is more to see. What gets the keyboard focus is brought into view.
Flickable {
    id: area

    readonly property bool overflows: contentHeight > height + 0.5
    property real revealedAt: -1 // contentY when something was last brought into view

    function reveal(item) {
        const top = item.mapToItem(contentItem, 0, 0).y - 4;
        const bottom = top + item.height + 8;
        if (top < contentY)
            contentY = Math.max(0, top);
        else if (bottom > contentY + height)
            contentY = Math.min(contentHeight - height, bottom - height);
        revealedAt = contentY;
    }
    function revealPlace() {
        const item = Window.activeFocusItem;
        if (item && overflows && holds(item))
            reveal(item);
    }
    // Page Up, Page Down, Home, End and the arrows, where nothing else has a use for them.
    function scrollByKey(event) {
        const page = height - 40;
        const places = {
            [Qt.Key_Up]: contentY - 40,
            [Qt.Key_Down]: contentY + 40,
            [Qt.Key_PageUp]: contentY - page,
            [Qt.Key_PageDown]: contentY + page,
            [Qt.Key_Home]: 0,
            [Qt.Key_End]: contentHeight
        };
        if (!overflows || !(event.key in places))
            return;
        contentY = Math.max(0, Math.min(places[event.key], contentHeight - height));
        event.accepted = true;
    }
    function holds(item) {
        for (let each = item; each; each = each.parent)
            if (each === contentItem)
                return true;
        return false;
    }

    clip: overflows
    interactive: false // see ScrollTools
    boundsBehavior: Flickable.StopAtBounds
    contentWidth: width
    onContentHeightChanged: {
        if (Math.abs(contentY - revealedAt) < 1) // it keeps to whole pixels
            Qt.callLater(revealPlace);
    }

    Connections {
        target: area.Window.window
        function onActiveFocusItemChanged() {
            area.revealPlace();
        }
    }
    // Most areas need none of it, and a panel is to stay small.
    Loader {
        readonly property bool isNeeded: area.overflows

        parent: area
        anchors.fill: parent
        onIsNeededChanged: {
            if (isNeeded)
                setSource("ScrollTools.qml", {
                    area: area
                });
            else
                source = "";
        }
    }
}
