// SPDX-License-Identifier: MIT
import QtQuick

// The sections of a pane, one below the other.
Column {
    spacing: 22
    width: parent ? parent.width : 0
}
