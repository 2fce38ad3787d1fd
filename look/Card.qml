// SPDX-License-Identifier: MIT
import QtQuick
import Vantle.Look

// The ground that things belonging together share. As high as its column of children.
RoundedBox {
    id: card

    default property alias content: column.data
    property real horizontalPadding: 12
    property real verticalPadding: 0
    property alias spacing: column.spacing

    radius: 12
    color: Look.control
    edgeColor: Look.edge
    implicitHeight: column.height + 2 * verticalPadding

    Column {
        id: column
        x: card.horizontalPadding
        y: card.verticalPadding
        width: card.width - 2 * card.horizontalPadding
    }
}
