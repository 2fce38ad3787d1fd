// SPDX-License-Identifier: MIT
import QtQuick
import Vantle.Look

// A figure over its label. With details it takes the keyboard, and tells them there and under the pointer.
Item {
    id: stat

    required property string value
    required property string label
    property string details

    implicitHeight: 40
    activeFocusOnTab: details !== ""
    Accessible.role: Accessible.StaticText
    Accessible.name: value + " " + label
    Accessible.description: details
    Accessible.focused: activeFocus

    Words {
        width: parent.width
        horizontalAlignment: Text.AlignHCenter
        text: stat.value
        font.pixelSize: 17
        font.weight: Font.DemiBold
        Accessible.ignored: true
    }
    Words {
        anchors.bottom: parent.bottom
        width: parent.width
        horizontalAlignment: Text.AlignHCenter
        text: stat.label
        font.pixelSize: 11
        fontSizeMode: Text.HorizontalFit // in other languages
        minimumPixelSize: 9
        color: Look.secondary
        Accessible.ignored: true
    }
    FocusRing {
        radius: 8
        sideGap: -5 // off the lines between the figures
    }
    HoverHandler {
        id: pointer
    }
    HoverTip {
        target: stat
        text: stat.details
        wanted: pointer.hovered || stat.activeFocus
        lines: 14
    }
}
