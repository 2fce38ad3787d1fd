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

    readonly property real before: picture.visible || progress.visible ? 24 : 0
    readonly property bool isTight: width - before - button.width - 12 < 130 // the button goes below the words

    width: parent ? parent.width : 0
    implicitHeight: isTight ? words.implicitHeight + button.height + 24 : 48

    Symbol {
        id: picture
        anchors.verticalCenter: words.verticalCenter
        visible: name !== ""
        width: 16
        height: 16
        name: row.model.symbol
        color: row.ink
    }
    Progress {
        id: progress
        anchors.verticalCenter: words.verticalCenter
        visible: row.model.checking
    }
    Words {
        id: words
        x: row.before
        y: row.isTight ? 8 : 0
        width: row.isTight ? row.width - x : button.x - x - 12
        height: row.isTight ? implicitHeight : parent.height
        text: row.model.status
        color: row.ink
        wrapMode: Text.Wrap
        maximumLineCount: row.isTight ? 6 : 2
        Accessible.role: Accessible.StaticText
    }
    PushButton {
        id: button
        x: row.isTight ? 0 : row.width - width
        width: Math.min(implicitWidth, row.width)
        y: row.isTight ? words.y + words.height + 8 : (row.height - height) / 2
        text: row.model.action
        prominent: row.model.available
        onTriggered: row.model.act()
    }
}
