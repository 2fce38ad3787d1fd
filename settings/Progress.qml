// SPDX-License-Identifier: MIT
import QtQuick
import Vantle.Look

// A small sign that something is under way. It turns in steps, and only while it is seen.
Item {
    id: progress

    property int step: 0

    implicitWidth: 16
    implicitHeight: 16
    Accessible.role: Accessible.ProgressBar
    Accessible.name: qsTr("Checking…")

    Timer {
        interval: 100
        repeat: true
        running: progress.visible && progress.Window.visibility !== Window.Hidden
        onTriggered: progress.step = (progress.step + 1) % 8
    }
    Repeater {
        model: 8

        RoundedBox {
            required property int index

            x: 7
            y: 0.5
            width: 2
            height: 5
            radius: 1
            transformOrigin: Item.Center
            transform: Rotation {
                origin.x: 1
                origin.y: 7.5
                angle: index * 45
            }
            color: Look.faded(Look.primary, 0.15 + 0.65 * ((index - progress.step + 7) % 8) / 7)
        }
    }
}
