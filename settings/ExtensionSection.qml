// SPDX-License-Identifier: MIT
import QtQuick
import Vantle.Look
import Vantle.Settings

// What has to stand in the desktop's shell: its switch, and the question before it is installed.
Section {
    id: section

    required property ExtensionModel model

    visible: model.offered
    header: "GNOME"
    footer: model.note

    Toggle {
        width: parent ? parent.width : 0
        text: qsTr("See native apps")
        checked: section.model.on
        onTriggered: section.model.toggle()
    }
    Divider {
        visible: section.model.asking
        width: parent.width
    }
    Column {
        visible: section.model.asking
        width: parent.width
        topPadding: 10
        bottomPadding: 12
        spacing: 10

        Words {
            width: parent.width
            text: qsTr("Install a small extension in GNOME? It tells Vantle which windows there are and which one is in front, and nobody else. It starts after you have logged out and in again once. Switching this off removes it.")
            wrapMode: Text.Wrap
            lineHeight: 1.15
            Accessible.role: Accessible.StaticText
        }
        Row {
            anchors.right: parent.right
            spacing: 8

            PushButton {
                text: qsTr("Cancel")
                onTriggered: section.model.cancel()
            }
            PushButton {
                text: qsTr("Install")
                prominent: true
                onTriggered: section.model.install()
            }
        }
    }
}
