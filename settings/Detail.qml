// SPDX-License-Identifier: MIT
import QtQuick
import Vantle.Look
import Vantle.Settings

// The chosen pane, under its title. A pane is made anew each time it is opened.
Item {
    id: detail

    required property SettingsModel model
    property bool isNarrow: false

    function scrollByKey(event) {
        area.scrollByKey(event);
    }

    ThemeTint {
        anchors.fill: parent
        light: 0.1
        dark: 0.18
    }
    Words {
        id: title
        x: pane.x + 12
        width: pane.width - 24
        height: 52
        text: detail.model.paneTitles[detail.model.pane]
        font.pixelSize: 17
        font.weight: Font.Bold
        Accessible.role: Accessible.Heading
    }
    ScrollArea {
        id: area
        anchors.top: title.bottom
        anchors.bottom: parent.bottom
        width: parent.width
        contentHeight: pane.height + 24

        Loader {
            id: pane
            x: Math.round((parent.width - width) / 2)
            width: Math.min(parent.width - (detail.isNarrow ? 20 : 40), 640)
            sourceComponent: [general, boost, appearance, updates, about][detail.model.pane]
            onLoaded: area.contentY = 0
        }
    }

    Component {
        id: general
        GeneralPane {
            model: detail.model
        }
    }
    Component {
        id: boost
        BoostPane {
            model: detail.model
        }
    }
    Component {
        id: appearance
        AppearancePane {
            model: detail.model.appearance
        }
    }
    Component {
        id: updates
        UpdatesPane {
            model: detail.model.updates
        }
    }
    Component {
        id: about
        AboutPane {
            model: detail.model.about
        }
    }
}
