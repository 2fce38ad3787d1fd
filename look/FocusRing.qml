// SPDX-License-Identifier: MIT
import QtQuick
import Vantle.Look

// Shows around its parent that the keyboard acts on it.
RoundedBox {
    id: ring

    property bool shown: parent.activeFocus
    property real gap: 2

    anchors.fill: parent
    anchors.margins: -gap
    visible: shown
    edgeWidth: 2
    edgeColor: Look.faded(Look.primary, 0.85)
}
