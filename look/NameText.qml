// SPDX-License-Identifier: MIT
import QtQuick
import Vantle.Look

// A text that holds a name from outside: when it is cut short, the whole of it is a tip.
Words {
    id: words

    HoverHandler {
        id: pointer
    }
    HoverTip {
        target: words
        text: words.text
        wanted: pointer.hovered && words.truncated
    }
}
