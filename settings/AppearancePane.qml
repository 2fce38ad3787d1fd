// SPDX-License-Identifier: MIT
import QtQuick
import Vantle.Look
import Vantle.Settings

Form {
    id: pane

    required property AppearanceModel model

    Section {
        header: qsTr("Accent color")

        Item {
            width: parent.width
            height: grid.height + 28

            SwatchGrid {
                id: grid
                y: 14
                width: parent.width
                model: pane.model
            }
        }
    }
    Section {
        header: qsTr("Appearance")

        Item {
            width: parent.width
            height: 52

            SegmentedChoice {
                anchors.verticalCenter: parent.verticalCenter
                width: Math.min(parent.width, 330)
                choices: pane.model.modeNames
                current: pane.model.mode
                onChosen: index => pane.model.chooseMode(index)
                Accessible.name: qsTr("Appearance")
            }
        }
    }
}
