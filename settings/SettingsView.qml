// SPDX-License-Identifier: MIT
import QtQuick
import Vantle.Look
import Vantle.Settings

// The window's content: the sidebar, and beside it the pane that is chosen there.
Rectangle {
    id: view

    required property SettingsModel model

    color: Look.surface

    Item {
        anchors.fill: parent
        // A dialog is modal: nothing behind it is reached by keyboard, pointer or screen reader.
        enabled: !view.model.picker.open

        Sidebar {
            id: sidebar
            height: parent.height
            model: view.model
        }
        Detail {
            anchors.left: sidebar.right
            anchors.right: parent.right
            height: parent.height
            model: view.model
        }
        SplitHandle {
            id: handle
            x: sidebar.width - width / 2
            height: parent.height
            onDragged: position => sidebar.width = Math.max(180, Math.min(220, position))
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
