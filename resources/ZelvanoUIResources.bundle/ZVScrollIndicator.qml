pragma ComponentBehavior: Bound

import QtQuick

// Shows where a list stands while it moves. In the colour of the surroundings' text.
Rectangle {
    id: indicator

    required property Flickable flickable

    readonly property bool shown: flickable.moving && flickable.visibleArea.heightRatio < 1

    x: flickable.x + (LayoutMirroring.enabled ? 2 : flickable.width - width - 2)
    y: flickable.y + 2 + flickable.visibleArea.yPosition * (flickable.height - 4)
    width: 4
    height: Math.max(24, flickable.visibleArea.heightRatio * (flickable.height - 4))
    radius: 2
    color: palette.windowText
    opacity: shown ? 0.45 : 0

    Behavior on opacity {
        NumberAnimation { duration: indicator.shown ? 80 : 400 }
    }
}
