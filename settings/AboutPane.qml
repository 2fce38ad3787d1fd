// SPDX-License-Identifier: MIT
import QtQuick
import Vantle.Look
import Vantle.Settings

Form {
    id: pane

    required property AboutModel model

    Section {
        footer: qsTr("Boost moves other apps to %1 while you work or play, and puts everything back when you stop. Vantle never quits anything unless you allow it.").arg(Place.cores)

        ValueRow {
            title: qsTr("Version")
            value: pane.model.version
        }
        Divider {
            width: parent.width
        }
        ValueRow {
            title: qsTr("Memory used by Vantle")
            value: pane.model.memory
        }
    }
}
