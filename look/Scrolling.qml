// SPDX-License-Identifier: MIT
import QtQuick

// How the pointer scrolls an area: by its wheel, and by dragging the page itself with a finger alone. With a
// mouse a page is not dragged.
Item {
    id: scrolling

    required property Flickable area
    readonly property real notch: 60 // points for a notch of the wheel, which is 120 units
    readonly property real way: area.contentHeight - area.height

    function goTo(y) {
        area.contentY = area.originY + Math.max(0, Math.min(y, way));
    }

    parent: area
    anchors.fill: parent

    WheelHandler {
        target: null
        enabled: scrolling.way > 0
        acceptedDevices: PointerDevice.Mouse | PointerDevice.TouchPad
        onWheel: event => {
            const distance = event.pixelDelta.y !== 0 ? event.pixelDelta.y : event.angleDelta.y / 120 * scrolling.notch;
            scrolling.area.cancelFlick();
            scrolling.goTo(scrolling.area.contentY - scrolling.area.originY - distance);
        }
    }
    DragHandler {
        id: finger

        property real start

        target: null
        enabled: scrolling.way > 0
        xAxis.enabled: false
        acceptedDevices: PointerDevice.TouchScreen
        onActiveChanged: {
            if (active)
                start = scrolling.area.contentY - scrolling.area.originY;
            else
                scrolling.area.flick(0, finger.centroid.velocity.y * 1000);
        }
        onActiveTranslationChanged: {
            if (active)
                scrolling.goTo(start - activeTranslation.y);
        }
    }
}
