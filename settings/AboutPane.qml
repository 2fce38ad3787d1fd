// SPDX-License-Identifier: MIT
import QtQuick
import Vantle.Look
import Vantle.Settings

Form {
    id: pane

    required property AboutModel model

    Section {
        footer: "Boost moves other apps to " + Place.cores + " while you work or play, and puts everything back when you stop. Vantle never quits anything unless you allow it."

        ValueRow {
            title: "Version"
            value: pane.model.version
        }
        Divider {
            width: parent.width
        }
        ValueRow {
            title: "Memory used by Vantle"
            value: pane.model.memory
        }
    }
}
