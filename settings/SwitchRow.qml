// SPDX-License-Identifier: MIT
import QtQuick
import Vantle.Look
import Vantle.Settings

// A Boolean setting as a switch across its card.
Toggle {
    id: row

    required property Switch setting

    width: parent ? parent.width : 0
    checked: setting.on
    onTriggered: setting.toggle()
}
