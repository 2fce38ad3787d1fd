// SPDX-License-Identifier: MIT
import QtQuick
import Vantle.Look

Words {
    leftPadding: 8
    rightPadding: 8
    topPadding: 4
    font.weight: Font.DemiBold
    color: Look.secondary
    Accessible.role: Accessible.Heading
}
