// SPDX-License-Identifier: MIT
import QtQuick
import Vantle.Look
import Vantle.Panel

// What can be done with an app in the background, over the whole panel as long as it lives. Escape, Tab or a
// press elsewhere leaves it, and the keyboard is where it was.
FocusScope {
    id: menu

    required property PanelModel panel
    property int pid: 0 // of the app
    property rect line // the app's line, which stays in sight
    property real wantedX
    property Item before // had the keyboard, unless it was a line:
    property Item list // its list, which has other lines after each look at the apps
    readonly property int place: panel.usage.findIndex(row => row.pid === pid)
    property int markedPlace

    signal closed

    function openFor(line, x) {
        pid = line.pid;
        sheet.name = line.name;
        menu.line = line.mapToItem(menu, 0, 0, line.width, line.height);
        markedPlace = place;
        wantedX = menu.line.x + x;
        if (line.activeFocus)
            list = line.parent;
        else
            before = Window.activeFocusItem;
        sheet.enter();
    }
    function close() {
        if (list && place < 0)
            Qt.callLater(list.resume); // when its line has gone
        else if (list)
            list.resume();
        else if (before)
            before.forceActiveFocus(Qt.PopupFocusReason);
        closed();
    }

    // Others come and go above it, or the app itself has ended.
    onPlaceChanged: {
        if (place < 0)
            close();
    }

    Keys.onEscapePressed: close()
    Keys.onTabPressed: close()
    Keys.onBacktabPressed: close()

    MouseArea {
        anchors.fill: parent
        acceptedButtons: Qt.AllButtons
        hoverEnabled: true
        onPressed: menu.close()
        onWheel: wheel => wheel.accepted = true
    }
    RoundedBox {
        x: menu.line.x
        y: menu.line.y + (menu.place - menu.markedPlace) * menu.line.height
        width: menu.line.width
        height: menu.line.height
        radius: 6
        color: Look.faded(Look.primary, 0.1)
    }
    MenuSheet {
        id: sheet
        x: Math.max(6, Math.min(menu.wantedX, menu.width - width - 6))
        y: menu.line.bottom + height <= menu.height - 6 ? menu.line.bottom : Math.max(6, menu.line.y - height)

        MenuLine {
            visible: menu.panel.canComeToFront(menu.pid)
            text: qsTr("Bring to front")
            onTriggered: {
                const panel = menu.panel;
                const pid = menu.pid;
                menu.close();
                panel.bringToFront(pid);
            }
        }
        MenuLine {
            visible: menu.panel.canBeProtected(menu.pid)
            text: qsTr("Never slow down")
            onTriggered: {
                const panel = menu.panel;
                const pid = menu.pid;
                menu.close();
                panel.neverSlowDown(pid);
            }
        }
    }
}
