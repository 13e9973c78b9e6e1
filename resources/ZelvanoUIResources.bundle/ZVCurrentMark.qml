pragma ComponentBehavior: Bound

import QtQuick

// Marks a view's current cell with two rings: one is visible on any image. A mark for each cell would cost more.
Rectangle {
    id: mark

    // Null for none.
    required property Item cell

    parent: cell
    visible: cell !== null
    width: cell?.width ?? 0
    height: cell?.height ?? 0
    z: 1
    radius: (cell as ZVVideoCollectionViewCell)?.corner ?? 0
    color: "transparent"
    border { width: 3; color: palette.highlight }

    Rectangle {
        anchors { fill: parent; margins: 3 }
        radius: mark.radius - 3
        color: "transparent"
        border { width: 1; color: "#ffffff" }
    }
}
