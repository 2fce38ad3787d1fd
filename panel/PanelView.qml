// SPDX-License-Identifier: MIT
import QtQuick
import Vantle.Look
import Vantle.Panel

// The panel's root: what is going on, from top to bottom. Header and footer stay; what lies between them
// scrolls when the screen is too low for it.
FocusScope {
    id: view

    required property PanelModel panel
    property real radius: 0
    property real maximumHeight: 2000
    readonly property real gap: 8
    readonly property real padding: 10
    readonly property real wantedHeight: 2 * padding + header.height + gap + middle.height + gap + footer.height

    implicitWidth: 360
    implicitHeight: Math.min(wantedHeight, maximumHeight)
    Accessible.role: Accessible.Pane
    Accessible.name: "Vantle"
    Keys.onPressed: event => area.scrollByKey(event)

    // The control that had the keyboard may go with what it was for: the one that stands in its place has it
    // then. Those who never used the keyboard see no ring.
    readonly property Item place: Window.activeFocusItem
    property bool isPlaced: false

    function isHeld(item) {
        return item !== view && item !== part;
    }
    function keepPlace() {
        if (!isPlaced || !place || (isHeld(place) && place.visible))
            return;
        const wanted = panel.boosting ? footer.turnOff : part.item.firstStop;
        (wanted ?? footer.automatic).forceActiveFocus(Qt.TabFocusReason);
    }

    onPlaceChanged: {
        if (place && !isHeld(place) && isPlaced)
            Qt.callLater(keepPlace);
        else
            isPlaced = place !== null && isHeld(place);
    }
    Connections {
        target: view.panel
        function onGameChanged() {
            Qt.callLater(view.keepPlace);
        }
    }

    RoundedBox {
        anchors.fill: parent
        radius: view.radius
        color: Look.surface
    }
    ThemeTint {
        anchors.fill: parent
        radius: view.radius
        light: 0.12
        dark: 0.2
    }
    RoundedBox {
        anchors.fill: parent
        radius: view.radius
        edgeColor: Look.divider
    }

    PanelHeader {
        id: header
        x: view.padding
        y: view.padding
        width: view.width - 2 * view.padding
        onSettingsWanted: view.panel.openSettings()
    }
    ScrollArea {
        id: area
        x: 0
        y: header.y + header.height + view.gap
        width: view.width
        height: Math.max(0, footer.y - view.gap - y)
        contentHeight: middle.height

        Column {
            id: middle
            x: view.padding
            width: view.width - 2 * view.padding
            spacing: view.gap

            Loader {
                id: part
                width: parent.width
                sourceComponent: view.panel.boosting ? boostingPart : idlePart
            }
        }
    }
    FooterCard {
        id: footer
        x: view.padding
        y: view.height - view.padding - height
        width: view.width - 2 * view.padding
        panel: view.panel
    }

    Loader {
        id: lineMenu

        function openFor(line, x) {
            if (!view.panel.canComeToFront(line.pid) && !view.panel.canBeProtected(line.pid))
                return;
            setSource("LineMenu.qml", {
                panel: view.panel
            });
            item.openFor(line, x);
        }

        anchors.fill: parent
        z: 900

        Connections {
            target: lineMenu.item
            function onClosed() {
                lineMenu.source = "";
            }
        }
    }

    Component {
        id: idlePart
        IdlePart {
            panel: view.panel
            spacing: view.gap
        }
    }
    Component {
        id: boostingPart
        BoostingPart {
            panel: view.panel
            spacing: view.gap
            onMenuWanted: (line, x) => lineMenu.openFor(line, x)
        }
    }
}
