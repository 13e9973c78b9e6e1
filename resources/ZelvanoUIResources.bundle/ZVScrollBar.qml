pragma ComponentBehavior: Bound

import QtQuick

// Shows a list's position while it moves, in the host's text colour. A mouse can drag it, or click beside it for a page.
// Fingers reach the list below.
Item {
    id: bar

    required property Flickable flickable

    readonly property real ratio: flickable.visibleArea.heightRatio
    readonly property bool isUsed: area.containsMouse || area.pressed
    readonly property bool shown: ratio < 1 && (flickable.moving || isUsed)

    x: flickable.x + (LayoutMirroring.enabled ? 0 : flickable.width - width)
    y: flickable.y
    width: 12
    height: flickable.height
    visible: ratio < 1

    function scrollTo(thumbY: real) {
        const begin = flickable.originY - flickable.topMargin;
        const way = flickable.contentHeight + flickable.topMargin + flickable.bottomMargin - flickable.height;
        const share = Math.max(0, Math.min(1, (thumbY - 2) / (height - 4 - thumb.height)));
        flickable.contentY = begin + share * way;
    }

    Rectangle {
        id: thumb

        anchors.horizontalCenter: parent.horizontalCenter
        y: 2 + (bar.height - 4 - height) * bar.flickable.visibleArea.yPosition / Math.max(0.001, 1 - bar.ratio)
        width: bar.isUsed ? 8 : 4
        height: Math.max(24, bar.ratio * (bar.height - 4))
        radius: width / 2
        color: palette.windowText
        opacity: !bar.shown ? 0 : area.pressed ? 0.7 : 0.45

        Behavior on opacity {
            NumberAnimation { duration: bar.shown ? 80 : 400 }
        }
        Behavior on width {
            NumberAnimation { duration: 80 }
        }
    }

    MouseArea {
        id: area

        property real grip

        anchors.fill: parent
        hoverEnabled: true
        preventStealing: true
        onPressed: mouse => {
            if (mouse.source !== Qt.MouseEventNotSynthesized) {
                mouse.accepted = false;
                return;
            }
            const isOnThumb = mouse.y >= thumb.y && mouse.y <= thumb.y + thumb.height;
            if (!isOnThumb)
                bar.scrollTo(thumb.y + (mouse.y < thumb.y ? -thumb.height : thumb.height));
            grip = mouse.y - thumb.y;
        }
        onPositionChanged: mouse => {
            if (pressed)
                bar.scrollTo(mouse.y - grip);
        }
    }
}
