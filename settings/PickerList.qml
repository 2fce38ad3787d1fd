// SPDX-License-Identifier: MIT
import QtQuick
import Vantle.Look
import Vantle.Settings

// The apps, or the folders and desktop files, of which one can be chosen. Rows exist while they are seen.
RoundedBox {
    id: frame

    required property AppPickerModel model

    radius: 8
    color: Look.control
    edgeColor: Look.divider

    Words {
        anchors.centerIn: parent
        visible: frame.model.count === 0
        text: frame.model.search !== "" ? "Nothing found" : "No apps here"
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
        highlightMoveDuration: 0
        activeFocusOnTab: true
        keyNavigationEnabled: false
        Accessible.role: Accessible.List
        Accessible.name: frame.model.browsing ? "Folder " + frame.model.folder : "Installed apps"
        Keys.onUpPressed: frame.model.step(-1)
        Keys.onDownPressed: frame.model.step(1)
        Keys.onReturnPressed: frame.model.activate(frame.model.current)
        Keys.onEnterPressed: frame.model.activate(frame.model.current)

        delegate: PickerRow {
            width: list.width
            current: ListView.isCurrentItem
            onChosen: frame.model.current = index
            onActivated: frame.model.activate(index)
        }
    }
    ScrollMark {
        area: list
        y: 5 + list.visibleArea.yPosition * list.height
        anchors.right: parent.right
        anchors.rightMargin: 1
    }
    FocusRing {
        shown: list.activeFocus
        gap: 1
        radius: 9
    }
}
