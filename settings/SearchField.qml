// SPDX-License-Identifier: MIT
import QtQuick
import Vantle.Look

// One line of text to search by. The arrows and Enter act on what was found, so that both hands stay here.
RoundedBox {
    id: field

    property alias text: input.text
    property string placeholder

    signal edited(string text)
    signal step(int rows)
    signal accepted

    function forceActiveFocus(reason) {
        input.forceActiveFocus(reason);
    }

    implicitHeight: 30
    radius: 7
    color: Look.control
    edgeColor: Look.outline

    Symbol {
        id: picture
        x: 9
        anchors.verticalCenter: parent.verticalCenter
        width: 14
        height: 14
        name: "magnifyingglass"
        color: Look.secondary
    }
    TextInput {
        id: input
        anchors.left: picture.right
        anchors.leftMargin: 7
        anchors.right: parent.right
        anchors.rightMargin: 9
        height: parent.height
        verticalAlignment: TextInput.AlignVCenter
        clip: true
        font.pixelSize: 13
        color: Look.primary
        selectionColor: Look.accentUnderText
        selectedTextColor: "white"
        maximumLength: 4096 // of a path
        activeFocusOnTab: true
        Accessible.role: Accessible.EditableText
        Accessible.name: field.placeholder
        onTextEdited: field.edited(text)
        Keys.onUpPressed: field.step(-1)
        Keys.onDownPressed: field.step(1)
        Keys.onPressed: event => {
            if (event.key !== Qt.Key_PageUp && event.key !== Qt.Key_PageDown)
                return;
            field.step(event.key === Qt.Key_PageUp ? -8 : 8);
            event.accepted = true;
        }
        onAccepted: field.accepted()

        Words {
            anchors.fill: parent
            visible: input.text === ""
            text: field.placeholder
            color: Look.secondary
            Accessible.ignored: true
        }
    }
    FocusRing {
        shown: input.activeFocus
        gap: 1
        radius: 8
        edgeColor: Look.accent
    }
}
