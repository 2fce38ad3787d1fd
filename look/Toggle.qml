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
    implicitHeight: Math.max(40, words.implicitHeight + 14)
    implicitWidth: words.implicitWidth + 12 + track.width
    ringRadius: 10
    ringGap: -3 // rows stand close together
    ringSideGap: 7

    Words {
        id: words
        anchors.left: parent.left
        anchors.right: track.left
        anchors.rightMargin: 12
        height: parent.height
        text: toggle.text
        wrapMode: Text.Wrap
        maximumLineCount: 4
        Accessible.ignored: true
    }
    RoundedBox {
        id: track
        anchors.right: parent.right
        anchors.verticalCenter: parent.verticalCenter
        width: 36
        height: 21
        radius: height / 2
        color: toggle.checked ? toggle.color : Look.outline
        edgeColor: toggle.checked ? Look.accentOutline : "transparent"

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
