// SPDX-License-Identifier: MIT
import QtQuick
import Vantle.Look

// A value with digits of equal width.
TabularText {
    color: Look.primary
    Accessible.role: Accessible.StaticText
    Accessible.name: text
}
