// SPDX-License-Identifier: MIT
import QtQuick
import Vantle.Look
import Vantle.Settings

Form {
    id: pane

    required property UpdatesModel model

    Section {
        ValueRow {
            title: qsTr("Current version")
            value: pane.model.currentVersion
        }
        Divider {
            width: parent.width
        }
        SwitchRow {
            text: qsTr("Check for updates automatically")
            setting: pane.model.automatically
        }
    }
    Section {
        footer: qsTr("Vantle only looks up the latest version number. It never downloads or installs anything by itself.")

        UpdateStatus {
            model: pane.model
        }
    }
}
