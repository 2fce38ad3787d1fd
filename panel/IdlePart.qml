// SPDX-License-Identifier: MIT
import QtQuick
import Vantle.Look
import Vantle.Panel

// What the panel shows while no Boost app is running.
Column {
    id: part

    required property PanelModel panel
    readonly property Item firstStop: front.visible ? front.boostButton : null

    IdleCard {
        width: parent.width
    }
    FrontApp {
        id: front
        width: parent.width
        visible: part.panel.frontName !== ""
        name: part.panel.frontName
        onBoostWanted: part.panel.boostNow()
        onAlwaysBoostWanted: part.panel.alwaysBoost()
    }
    Column {
        width: parent.width
        spacing: 4

        SectionTitle {
            width: parent.width
            text: qsTr("Your %1").arg(Place.computer)
        }
        YourMac {
            width: parent.width
            panel: part.panel
        }
    }
}
