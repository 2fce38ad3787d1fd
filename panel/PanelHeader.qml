// SPDX-License-Identifier: MIT
import QtQuick
import Vantle.Look

Item {
    id: header

    signal settingsWanted

    implicitHeight: 30

    Words {
        x: 6
        height: parent.height
        text: "vantle"
        font.pixelSize: 15
        font.bold: true
    }
    SymbolButton {
        anchors.right: parent.right
        anchors.rightMargin: 6
        anchors.verticalCenter: parent.verticalCenter
        width: 28
        height: 28
        symbol: "gearshape"
        symbolSize: 17
        color: Look.faded(Look.primary, 0.7)
        help: qsTr("Settings")
        onTriggered: header.settingsWanted()
    }
}
