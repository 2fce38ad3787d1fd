// SPDX-License-Identifier: MIT
import QtQuick
import Vantle.Look

// A slim bar at the edge of something that scrolls: where in it one is, while there is more to see. It widens
// under the pointer; it can be dragged, and a press beside it goes a page that way.
MouseArea {
    id: mark

    required property Flickable area
    readonly property real way: area.contentHeight - area.height // how far there is to go
    readonly property bool isWide: containsMouse || pressed
    property real hold: 0 // where in the bar the pointer took it

    function goTo(y) {
        area.contentY = area.originY + Math.max(0, Math.min(y, way));
    }

    visible: area.visibleArea.heightRatio < 0.999
    width: 12
    height: area.height
    hoverEnabled: true
    preventStealing: true
    onPressed: mouse => {
        hold = mouse.y - bar.y;
        if (hold < 0 || hold > bar.height)
            goTo(area.contentY - area.originY + Math.sign(hold) * (area.height - 40));
    }
    onPositionChanged: mouse => {
        const isHeld = pressed && hold >= 0 && hold <= bar.height;
        if (isHeld)
            goTo((mouse.y - hold) / (height - bar.height) * way);
    }

    RoundedBox {
        id: bar
        anchors.right: parent.right
        anchors.rightMargin: 1
        width: mark.isWide ? 8 : 4
        radius: width / 2
        y: mark.way > 0 ? (mark.area.contentY - mark.area.originY) / mark.way * (mark.height - height) : 0
        height: Math.max(24, mark.area.visibleArea.heightRatio * mark.height)
        color: Look.faded(Look.primary, mark.isWide ? 0.6 : 0.4)
    }
}
