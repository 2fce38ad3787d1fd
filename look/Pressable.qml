// SPDX-License-Identifier: MIT
import QtQuick
import Vantle.Look

// What every button is: pressed with the pointer, with Enter or Space, or by a screen reader. A click leaves
// the keyboard focus where it is, so the focus ring shows to those only who use the keyboard.
Item {
    id: pressable

    property string label     // its name for screen readers
    property string help      // told to screen readers
    property string tip: help // shown while the pointer rests on it
    property real ringRadius: 8
    property alias ringGap: ring.gap         // to the ring, above and below …
    property alias ringSideGap: ring.sideGap // … and beside it
    property bool checkable: false
    property bool checked: false
    readonly property bool pressed: (pointer.pressed && pointer.containsMouse) || keyDown
    readonly property bool hovered: pointer.containsMouse
    property bool keyDown: false

    signal triggered

    function trigger() {
        if (enabled)
            triggered();
    }

    // What the role offers by itself comes to these; handlers of the signals would offer each once more.
    function accessiblePressAction() {
        trigger();
    }
    function accessibleToggleAction() {
        trigger();
    }

    activeFocusOnTab: true
    Accessible.role: checkable ? Accessible.CheckBox : Accessible.Button
    Accessible.name: label
    Accessible.description: help
    Accessible.focusable: true
    Accessible.focused: activeFocus
    Accessible.checkable: checkable
    Accessible.checked: checked

    Keys.onPressed: event => {
        const acts = event.key === Qt.Key_Return || event.key === Qt.Key_Enter || event.key === Qt.Key_Space;
        if (!acts || event.isAutoRepeat)
            return;
        keyDown = true;
        event.accepted = true;
    }
    Keys.onReleased: event => {
        if (!keyDown || event.isAutoRepeat)
            return;
        keyDown = false;
        event.accepted = true;
        trigger();
    }
    onActiveFocusChanged: keyDown = false

    MouseArea {
        id: pointer
        anchors.fill: parent
        hoverEnabled: true
        onClicked: pressable.trigger()
    }
    FocusRing {
        id: ring
        radius: pressable.ringRadius + gap
    }
    HoverTip {
        target: pressable
        text: pressable.tip
        wanted: pressable.hovered
    }
}
