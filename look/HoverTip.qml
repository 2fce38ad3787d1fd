// SPDX-License-Identifier: MIT
import QtQuick
import Vantle.Look

// A tip near its target while the pointer rests on it, or the keyboard. It stays inside the window, over
// everything else, and has the colours the other way round, so that it stands out from a card.
Item {
    id: tip

    required property Item target
    property string text
    property bool wanted: false
    property int lines: 6 // at most

    onWantedChanged: if (!wanted) bubble.active = false

    Timer {
        interval: 600
        running: tip.wanted && tip.text !== ""
        onTriggered: bubble.active = true
    }
    Loader {
        id: bubble
        active: false
        parent: tip.target.Window.contentItem
        z: 1000
        onLoaded: place()

        function place() {
            const window = tip.target.Window.contentItem;
            const below = tip.target.mapToItem(window, 0, tip.target.height + 4);
            const above = tip.target.mapToItem(window, 0, -4 - height);
            x = Math.max(6, Math.min(below.x, window.width - width - 6));
            y = below.y + height <= window.height - 6 ? below.y : Math.max(6, above.y);
        }

        sourceComponent: RoundedBox {
            readonly property real room: tip.target.Window.width - 12

            radius: 6
            color: Look.primary
            width: words.width + 16
            height: words.height + 8

            Words {
                id: words
                x: 8
                y: 4
                width: Math.min(implicitWidth, parent.room - 16)
                text: tip.text
                font.pixelSize: 11
                wrapMode: Text.Wrap
                maximumLineCount: tip.lines
                color: Look.surface
            }
        }
    }
}
