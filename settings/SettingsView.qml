// SPDX-License-Identifier: MIT
import QtQuick
import Vantle.Look
import Vantle.Settings

// The window's content: the sidebar, and beside it the pane that is chosen there. In a window that is narrower than
// it wants to be, as tiling window managers make them, the sidebar gives way to what is beside it.
Rectangle {
    id: view

    required property SettingsModel model
    readonly property bool isNarrow: width < 560

    color: Look.surface
    focus: true
    Keys.onPressed: event => {
        const closes = event.key === Qt.Key_Escape || (event.key === Qt.Key_W && event.modifiers === Qt.ControlModifier);
        if (!closes)
            return detail.scrollByKey(event);
        event.accepted = true;
        view.Window.window.close();
    }

    // Where the keyboard was before a dialog took it, and is again when that is gone.
    readonly property Item focusItem: Window.activeFocusItem
    property Item placeBehind

    onFocusItemChanged: {
        for (let each = focusItem; each; each = each.parent) {
            if (each === behind)
                placeBehind = focusItem;
        }
    }
    Connections {
        target: view.model.picker
        function onOpenChanged() {
            if (!view.model.picker.open)
                Qt.callLater(view.goBack);
        }
    }

    function goBack() {
        (placeBehind ?? view).forceActiveFocus(Qt.PopupFocusReason);
    }

    Item {
        id: behind
        anchors.fill: parent
        // A dialog is modal: nothing behind it is reached by keyboard, pointer or screen reader.
        enabled: !view.model.picker.open

        Sidebar {
            id: sidebar
            height: parent.height
            isNarrow: view.isNarrow
            model: view.model
        }
        Detail {
            id: detail
            anchors.left: sidebar.right
            anchors.right: parent.right
            height: parent.height
            isNarrow: view.isNarrow
            model: view.model
        }
        SplitHandle {
            id: handle
            x: sidebar.width - width / 2
            height: parent.height
            enabled: !view.isNarrow
            onDragged: position => sidebar.wantedWidth = Math.max(180, Math.min(220, position))
        }
    }
    Loader {
        anchors.fill: parent
        active: view.model.picker.open
        focus: active
        sourceComponent: AppPicker {
            model: view.model.picker
        }
    }
}
