// SPDX-License-Identifier: MIT
import QtQuick
import Vantle.Look
import Vantle.Settings

// What the last check found, and the button for what comes next.
Item {
    id: row

    required property UpdatesModel model
    readonly property color ink: {
        switch (model.tone) {
        case UpdatesModel.Tone.good:
            return Look.green;
        case UpdatesModel.Tone.warning:
            return Look.orange;
        case UpdatesModel.Tone.quiet:
            return Look.secondary;
        default:
            return Look.primary;
        }
    }

    width: parent ? parent.width : 0
    implicitHeight: 48

    Symbol {
        id: picture
        anchors.verticalCenter: parent.verticalCenter
        visible: name !== ""
        width: 16
        height: 16
        name: row.model.symbol
        color: row.ink
    }
    Progress {
        id: progress
        anchors.verticalCenter: parent.verticalCenter
        visible: row.model.checking
    }
    Words {
        x: picture.visible || progress.visible ? 24 : 0
        width: button.x - x - 12
        height: parent.height
        text: row.model.status
        color: row.ink
        wrapMode: Text.Wrap
        maximumLineCount: 2
        Accessible.role: Accessible.StaticText
    }
    PushButton {
        id: button
        anchors.right: parent.right
        anchors.verticalCenter: parent.verticalCenter
        text: row.model.action
        prominent: row.model.available
        onTriggered: row.model.act()
    }
}
