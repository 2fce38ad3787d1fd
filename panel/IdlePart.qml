// SPDX-License-Identifier: MIT
import QtQuick
import Vantle.Look
import Vantle.Panel

// What the panel shows while no Boost app is running.
Column {
    id: part

    required property PanelModel panel

    IdleCard {
        width: parent.width
    }
    FrontApp {
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
            text: "Your " + Place.computer
        }
        YourMac {
            width: parent.width
            panel: part.panel
        }
    }
}
