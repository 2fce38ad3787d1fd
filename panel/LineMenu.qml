// SPDX-License-Identifier: MIT
import QtQuick
import Vantle.Look
import Vantle.Panel

// What can be done with an app in the background, over the whole panel while it is open. Escape, Tab or a
// press elsewhere leaves it, and the keyboard is where it was.
FocusScope {
    id: menu

    required property PanelModel panel
    property int pid: 0 // of the app …
    property string name // … and what it is called
    property point place
    property Item before // had the keyboard
    property bool isOpen: false

    function openFor(line, x, y) {
        pid = line.pid;
        name = line.name;
        place = line.mapToItem(menu, x, y);
        before = Window.activeFocusItem;
        isOpen = true;
        loader.item.enter();
    }
    function close() {
        const back = before;
        isOpen = false;
        if (back)
            back.forceActiveFocus(Qt.PopupFocusReason);
    }

    visible: isOpen
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
    Loader {
        id: loader
        active: menu.isOpen
        focus: true
        x: Math.max(6, Math.min(menu.place.x, menu.width - width - 6))
        y: menu.place.y + height <= menu.height - 6 ? menu.place.y : Math.max(6, menu.place.y - height)

        sourceComponent: MenuSheet {
            name: menu.name

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
}
