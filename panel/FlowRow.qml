// SPDX-License-Identifier: MIT
import QtQuick
import Vantle.Look
import Vantle.Panel

// Names as small chips, wrapped.
FlowLayout {
    id: flow

    property var items: []

    spacing: 6
    Accessible.role: Accessible.List
    Accessible.name: qsTr("Not touched")

    Repeater {
        model: flow.items

        RoundedBox {
            id: chip

            required property string modelData

            implicitWidth: Math.min(words.implicitWidth + 20, flow.width)
            implicitHeight: words.implicitHeight + 10
            radius: height / 2
            color: Look.faded(Look.primary, 0.07)

            NameText {
                id: words
                x: 10
                y: 5
                width: parent.width - 20
                text: chip.modelData
                font.pixelSize: 12
            }
        }
    }
}
