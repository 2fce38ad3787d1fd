// SPDX-License-Identifier: MIT
import QtQuick
import Vantle.Look
import Vantle.Settings

// The apps of one setting, each with a button that takes it off the list, and a button that adds one. The rows
// are one stop for Tab; the arrow keys, Home, End, Page Up, Page Down and letters go through them. Of a long list
// only the rows in sight are made, and the one that Tab leads to: a row costs 80 KB.
Column {
    id: list

    required property AppListModel apps
    required property AppPickerModel picker
    property string title // of the list, for screen readers: its buttons are called as those of other lists
    property string addTitle
    property string emptyText // empty: the list says nothing when it holds nothing
    property int current: 0 // the row that Tab leads to
    property int called: -1 // the one that it is about to lead to
    readonly property bool isLong: apps.count > 40
    property Item area: null // in which a long list is scrolled
    property point seen // from where to where, in points below the first row's top; both change at once

    // The keyboard goes first: an item that has it cannot cease to be a stop for the Tab key.
    function focusRow(index) {
        const place = Math.max(0, Math.min(index, rows.count - 1));
        called = place;
        const row = rows.itemAt(place)?.row;
        (row ? row.removeButton : addButton).forceActiveFocus(Qt.TabFocusReason);
        current = place;
    }
    function look() {
        if (!isLong)
            return;
        let above = parent;
        while (above && !above.revealPlace)
            above = above.parent;
        area = above;
        const top = area ? shelf.mapToItem(area, 0, 0).y : 0;
        const more = 100; // for the next steps
        seen = Qt.point(-top - more, (area ? area.height : 1000) - top + more);
    }

    onIsLongChanged: look()
    Connections {
        target: list.area
        function onContentYChanged() {
            list.look();
        }
        function onContentHeightChanged() {
            list.look();
        }
        function onHeightChanged() {
            list.look();
        }
    }

    width: parent ? parent.width : 0
    topPadding: 4
    bottomPadding: 4

    ListKeys {
        id: keys
        count: rows.count
        current: list.current
        nameAt: index => list.apps.nameAt(index)
        onWanted: index => list.focusRow(index)
    }
    Words {
        visible: list.apps.count === 0 && list.emptyText !== ""
        width: parent.width
        topPadding: 7
        bottomPadding: 5
        text: list.emptyText
        color: Look.secondary
        wrapMode: Text.Wrap
    }
    Column {
        id: shelf
        width: parent.width
        Accessible.role: Accessible.List
        Accessible.name: list.title
        Keys.onPressed: event => keys.handle(event)

        Repeater {
            id: rows
            model: list.apps
            onCountChanged: list.current = Math.max(0, Math.min(list.current, count - 1))

            Loader {
                id: place

                required property int index
                required property string key
                required property string name
                required property string icon
                readonly property AppRow row: item as AppRow
                // By its number: all of them are at the top until they are positioned.
                readonly property bool isInSight: (index + 1) * height > list.seen.x && index * height < list.seen.y

                width: list.width
                height: 34
                active: !list.isLong || isInSight || index === list.current || index === list.called
                sourceComponent: AppRow {
                    name: place.name
                    icon: place.icon
                    isStop: place.index === list.current
                    onRemoveWanted: hadFocus => {
                        const index = place.index;
                        const owner = list;
                        owner.apps.remove(place.key);
                        if (hadFocus)
                            owner.focusRow(index);
                    }
                    onEntered: list.current = place.index
                }
            }
        }
    }
    Flow {
        width: parent.width
        topPadding: 6
        bottomPadding: 6
        spacing: 6

        PushButton {
            id: addButton
            text: list.addTitle
            help: list.title
            tip: ""
            onTriggered: list.picker.openFor(list.apps)
        }
        Item {
            // Keeps the other button at the right edge while both stand on one line.
            width: Math.max(0, parent.width - addButton.width - restoreButton.width - 2 * parent.spacing)
            height: 1
            visible: restoreButton.visible && width > 0
        }
        PushButton {
            id: restoreButton
            visible: list.apps.restorable
            text: qsTr("Restore defaults")
            help: list.title
            tip: ""
            onTriggered: {
                const hadFocus = activeFocus;
                list.apps.restoreDefaults();
                if (hadFocus)
                    addButton.forceActiveFocus(Qt.TabFocusReason);
            }
        }
    }
}
