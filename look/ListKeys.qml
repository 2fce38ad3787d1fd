// SPDX-License-Identifier: MIT
import QtQuick

// What keys do in a list of names: arrows, Home, End, Page Up and Page Down, and letters, which go to the next
// name that begins with those typed within a second.
QtObject {
    id: keys

    property int count
    property int current
    property int page: 8
    property var nameAt // (index) => name
    property string typed
    property double typedAt: 0 // milliseconds

    signal wanted(int index)

    function handle(event) {
        const places = {
            [Qt.Key_Up]: current - 1,
            [Qt.Key_Down]: current + 1,
            [Qt.Key_Home]: 0,
            [Qt.Key_End]: count - 1,
            [Qt.Key_PageUp]: current - page,
            [Qt.Key_PageDown]: current + page
        };
        const place = event.key in places ? places[event.key] : named(event);
        if (place === undefined || count === 0)
            return;
        event.accepted = true;
        wanted(Math.max(0, Math.min(place, count - 1)));
    }
    // One letter alone, also again and again, goes from one name to the next; more of them stay if they can.
    function named(event) {
        const letter = event.text.toLowerCase();
        const commands = Qt.ControlModifier | Qt.AltModifier | Qt.MetaModifier;
        if (letter.length !== 1 || letter <= " " || letter === "\x7f" || event.modifiers & commands)
            return undefined;
        const continues = Date.now() - typedAt < 1000 && typed !== letter;
        const sought = continues ? typed + letter : letter;
        typed = sought;
        typedAt = Date.now();
        for (let step = sought.length > 1 ? 0 : 1; step <= count; ++step) {
            const place = (Math.max(current, 0) + step) % count;
            if (nameAt(place).toLowerCase().startsWith(sought))
                return place;
        }
        return current;
    }
}
