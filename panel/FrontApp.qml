// SPDX-License-Identifier: MIT
import QtQuick
import Vantle.Look

// Offers to boost the app that was last in front.
Column {
    id: front

    required property string name
    readonly property alias boostButton: boost

    signal boostWanted
    signal alwaysBoostWanted

    spacing: 6

    NameText {
        x: 8
        width: parent.width - 16
        text: qsTr("In front: %1").arg(front.name)
    }
    CapsuleButton {
        id: boost
        width: parent.width
        prominent: true
        text: qsTr("Boost %1 now").arg(front.name)
        onTriggered: front.boostWanted()
    }
    CapsuleButton {
        width: parent.width
        text: qsTr("Always boost %1").arg(front.name)
        onTriggered: front.alwaysBoostWanted()
    }
}
