// SPDX-License-Identifier: MIT
import QtQuick
import Vantle.Look

// A switch with its text. It shows what it is told in `checked`, and tells when the person wants the other.
Pressable {
    id: toggle

    property string text
    property alias font: words.font
    property color color: Look.accent

    label: text
    checkable: true
    implicitHeight: 40
    implicitWidth: words.implicitWidth + 12 + track.width
    ringRadius: 8

    Words {
        id: words
        anchors.left: parent.left
        anchors.right: track.left
        anchors.rightMargin: 12
        height: parent.height
        text: toggle.text
        Accessible.ignored: true
    }
    RoundedBox {
        id: track
        anchors.right: parent.right
        anchors.verticalCenter: parent.verticalCenter
        width: 36
        height: 21
        radius: height / 2
        color: toggle.checked ? toggle.color : Look.faded(Look.primary, Look.dark ? 0.28 : 0.22)

        RoundedBox {
            width: 17
            height: 17
            radius: 8.5
            x: toggle.checked ? parent.width - width - 2 : 2
            y: 2
            color: "white"
            edgeColor: Qt.rgba(0, 0, 0, 0.08)
        }
    }
}
