// SPDX-License-Identifier: MIT
import QtQuick
import Vantle.Look
import Vantle.Settings

// The apps, or the folders and what is in them, of which one can be chosen. Rows exist while they are seen.
RoundedBox {
    id: frame

    required property AppPickerModel model

    radius: 8
    color: Look.control
    edgeColor: Look.divider

    Words {
        anchors.centerIn: parent
        visible: frame.model.count === 0
        text: frame.model.search !== "" ? qsTr("Nothing found") : qsTr("No apps here")
        color: Look.secondary
    }
    ListView {
        id: list
        anchors.fill: parent
        anchors.margins: 5
        clip: true
        model: frame.model
        currentIndex: frame.model.current
        boundsBehavior: Flickable.StopAtBounds
        interactive: false // see Scrolling
        highlightMoveDuration: 0
        activeFocusOnTab: true
        keyNavigationEnabled: false
        Accessible.role: Accessible.List
        Accessible.name: frame.model.browsing ? qsTr("Folder %1").arg(frame.model.folder) : qsTr("Installed apps")
        Keys.onPressed: event => keys.handle(event)
        Keys.onReturnPressed: frame.model.activate(frame.model.current)
        Keys.onEnterPressed: frame.model.activate(frame.model.current)

        ListKeys {
            id: keys
            count: frame.model.count
            current: frame.model.current
            nameAt: index => frame.model.nameAt(index)
            onWanted: index => frame.model.current = index
        }

        delegate: PickerRow {
            width: list.width
            current: ListView.isCurrentItem
            onChosen: frame.model.current = index
            onActivated: frame.model.activate(index)
        }
    }
    Scrolling {
        area: list
    }
    ScrollMark {
        area: list
        y: list.y
        anchors.right: parent.right
    }
    FocusRing {
        shown: list.activeFocus
        gap: 1
        radius: 9
    }
}
