// SPDX-License-Identifier: MIT
import QtQuick
import Vantle.Look
import Vantle.Settings

// One swatch for each accent, in as many columns of at least 64 points as there is room for.
RovingGroup {
    id: grid

    required property AppearanceModel model
    readonly property int columns: Math.max(1, Math.min(count, Math.floor((width + 12) / (64 + 12))))

    spacing: 12
    rowLength: columns
    count: swatches.count
    current: model.accent
    itemAt: index => swatches.itemAt(index)
    onChosen: index => model.chooseAccent(index)
    Accessible.role: Accessible.Grouping
    Accessible.name: qsTr("Accent color")

    Repeater {
        id: swatches
        model: grid.model.accents

        Swatch {
            required property int index
            required property string modelData

            width: Math.floor((grid.width - 12 * (grid.columns - 1)) / grid.columns)
            color: Look.accentNamed(modelData)
            title: grid.model.accentNames[index]
            selected: index === grid.model.accent
            onTriggered: grid.choose(index)
        }
    }
}
