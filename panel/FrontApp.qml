// SPDX-License-Identifier: MIT
import QtQuick
import Vantle.Look

// Offers to boost the app that was last in front.
Column {
    id: front

    required property string name

    signal boostWanted
    signal alwaysBoostWanted

    spacing: 6

    NameText {
        x: 8
        width: parent.width - 16
        text: "In front: " + front.name
    }
    CapsuleButton {
        width: parent.width
        prominent: true
        text: "Boost " + front.name + " now"
        onTriggered: front.boostWanted()
    }
    CapsuleButton {
        width: parent.width
        text: "Always boost " + front.name
        onTriggered: front.alwaysBoostWanted()
    }
}
