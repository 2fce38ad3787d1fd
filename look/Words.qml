// SPDX-License-Identifier: MIT
import QtQuick
import Vantle.Look

// A text of the interface: plain, elided when it does not fit, and readable for screen readers.
Text {
    color: Look.primary
    font.pixelSize: 13
    elide: Text.ElideRight
    textFormat: Text.PlainText
    horizontalAlignment: Text.AlignLeft // whichever way the text itself runs
    verticalAlignment: Text.AlignVCenter
    Accessible.role: Accessible.StaticText
    Accessible.name: text
}
