// SPDX-License-Identifier: MIT
import QtQuick
import Vantle.Look

// A hairline, lying unless it is made higher than wide.
Hairline {
    implicitHeight: 1
    implicitWidth: 1
    color: Look.divider
}
