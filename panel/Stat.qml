// SPDX-License-Identifier: MIT
import QtQuick
import Vantle.Look

// A figure over its label.
Item {
    id: stat

    required property string value
    required property string label

    implicitHeight: 40

    Words {
        width: parent.width
        horizontalAlignment: Text.AlignHCenter
        text: stat.value
        font.pixelSize: 17
        font.weight: Font.DemiBold
    }
    Words {
        anchors.bottom: parent.bottom
        width: parent.width
        horizontalAlignment: Text.AlignHCenter
        text: stat.label
        font.pixelSize: 11
        color: Look.secondary
    }
}
