// SPDX-License-Identifier: MIT
import QtQuick
import Vantle.Look

// Shows around its parent that the keyboard acts on it.
RoundedBox {
    id: ring

    property bool shown: parent.activeFocus
    property real gap: 2
    property real sideGap: gap

    z: 1 // over what its parent is filled with
    anchors.fill: parent
    anchors.topMargin: -gap
    anchors.bottomMargin: -gap
    anchors.leftMargin: -sideGap
    anchors.rightMargin: -sideGap
    visible: shown
    edgeWidth: 2
    edgeColor: Look.faded(Look.primary, 0.85)
}
