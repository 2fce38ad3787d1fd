// SPDX-License-Identifier: MIT
import QtQuick
import Vantle.Look
import Vantle.Settings

Form {
    id: pane

    required property SettingsModel model

    Section {
        SwitchRow {
            text: qsTr("Start Boost automatically when a Boost app opens")
            setting: pane.model.automatic
        }
        Divider {
            width: parent.width
        }
        SwitchRow {
            text: qsTr("Open Vantle at login")
            setting: pane.model.openAtLogin
        }
    }
    ExtensionSection {
        model: pane.model.extension
    }
}
