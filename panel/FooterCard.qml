// SPDX-License-Identifier: MIT
import QtQuick
import Vantle.Look
import Vantle.Panel

Card {
    id: card

    required property PanelModel panel
    readonly property alias automatic: automaticSwitch
    readonly property alias turnOff: turnOffButton

    horizontalPadding: 12

    Toggle {
        id: automaticSwitch
        width: parent.width
        height: 40
        text: qsTr("Start Boost automatically")
        font.pixelSize: 13
        checked: card.panel.automatic
        onTriggered: card.panel.automatic = !card.panel.automatic
    }
    StatusLine {
        width: parent.width
        visible: card.panel.pauseText !== ""
        color: Look.tertiary
        text: card.panel.pauseText
    }
    Item {
        width: parent.width
        height: 32
        visible: card.panel.pauseText !== ""

        PlainButton {
            anchors.centerIn: parent
            text: qsTr("End pause")
            font.pixelSize: 12
            color: Look.secondary
            onTriggered: card.panel.endPause()
        }
    }
    CapsuleButton {
        id: turnOffButton
        width: parent.width
        visible: card.panel.boosting
        prominent: true
        text: qsTr("Turn off Boost")
        onTriggered: card.panel.turnOffBoost()
    }
    Item {
        width: parent.width
        height: 36

        PlainButton {
            anchors.centerIn: parent
            text: qsTr("Quit Vantle")
            font.pixelSize: 12
            color: Look.secondary
            onTriggered: card.panel.quit()
        }
    }
}
