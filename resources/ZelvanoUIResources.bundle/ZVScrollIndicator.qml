pragma ComponentBehavior: Bound

import QtQuick

// Shows a list's position while it moves, in the host's text colour.
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
