// SPDX-License-Identifier: MIT
import QtQuick
import Vantle.Look

// A button that is only a symbol; its help says what it does.
Pressable {
    id: button

    property alias symbol: picture.name
    property alias color: picture.color
    property real symbolSize: 16

    label: help
    implicitWidth: 28
    implicitHeight: 28
    ringRadius: 7
    opacity: pressed ? 0.6 : 1

    RoundedBox {
        anchors.fill: parent
        radius: 7
        color: Look.faded(Look.primary, 0.07)
        visible: button.hovered
    }
    Symbol {
        id: picture
        anchors.centerIn: parent
        width: button.symbolSize
        height: button.symbolSize
        color: Look.primary
    }
}
