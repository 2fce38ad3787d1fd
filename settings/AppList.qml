// SPDX-License-Identifier: MIT
import QtQuick
import Vantle.Look
import Vantle.Settings

// The apps of one setting, each with a button that takes it off the list, and a button that adds one.
Column {
    id: list

    required property AppListModel apps
    required property AppPickerModel picker
    property string addTitle
    property string emptyText // empty: the list says nothing when it holds nothing

    width: parent ? parent.width : 0
    topPadding: 4
    bottomPadding: 4

    // Where the keyboard goes when the row under it is gone.
    function focusRow(index) {
        const row = rows.itemAt(Math.min(index, rows.count - 1));
        (row ? row.removeButton : addButton).forceActiveFocus(Qt.TabFocusReason);
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
    Repeater {
        id: rows
        model: list.apps

        Item {
            id: row

            required property int index
            required property string key
            required property string name
            required property string icon
            readonly property alias removeButton: button

            width: list.width
            height: 34
            Accessible.role: Accessible.ListItem
            Accessible.name: name

            AppImage {
                id: picture
                anchors.verticalCenter: parent.verticalCenter
                width: found ? 20 : 0
                height: 20
                source: row.icon
            }
            Words {
                anchors.left: picture.right
                anchors.leftMargin: picture.found ? 8 : 0
                anchors.right: button.left
                anchors.rightMargin: 8
                height: parent.height
                text: row.name
                Accessible.ignored: true
            }
            SymbolButton {
                id: button
                anchors.right: parent.right
                anchors.rightMargin: -6
                anchors.verticalCenter: parent.verticalCenter
                symbol: "minus.circle.fill"
                color: Look.secondary
                help: "Remove"
                label: "Remove " + row.name
                onTriggered: {
                    const place = row.index;
                    const hadFocus = activeFocus;
                    const owner = list;
                    owner.apps.remove(row.key);
                    if (hadFocus)
                        owner.focusRow(place);
                }
            }
            Divider {
                anchors.bottom: parent.bottom
                width: parent.width
            }
        }
    }
    Item {
        width: parent.width
        height: 40

        PushButton {
            id: addButton
            anchors.verticalCenter: parent.verticalCenter
            text: list.addTitle
            onTriggered: list.picker.openFor(list.apps)
        }
    }
}
