pragma ComponentBehavior: Bound

import QtQuick

// A mouse user's button at an end of a row, which scrolls it by a page. The keyboard and fingers need none.
Rectangle {
    id: button

    required property Flickable flickable
    // -1 to the left, 1 to the right.
    required property int direction
    required property bool hovered

    readonly property real begin: flickable.originX - flickable.leftMargin
    readonly property real end: Math.max(begin, flickable.originX + flickable.contentWidth + flickable.rightMargin
                                                - flickable.width)
    readonly property real room: direction < 0 ? flickable.contentX - begin : end - flickable.contentX
    readonly property alias pressed: area.pressed

    x: flickable.x + (direction < 0 ? 8 : flickable.width - width - 8)
    anchors.verticalCenter: flickable.verticalCenter
    width: 36
    height: 36
    radius: 18
    color: area.pressed ? "#e6ffffff" : area.containsMouse ? "#e6000000" : "#a6000000"
    border { width: 1; color: "#59ffffff" }
    visible: opacity > 0
    opacity: (hovered || area.containsMouse) && room > 1 ? 1 : 0

    Accessible.ignored: true

    Behavior on opacity {
        NumberAnimation { duration: 120 }
    }

    // A chevron.
    Repeater {
        model: [45, -45]

        Rectangle {
            required property real modelData

            x: button.width / 2 - width / 2 + button.direction
            y: button.height / 2 - height / 2 + (modelData > 0 ? -1 : 1) * button.direction * 3.2
            width: 11
            height: 2
            radius: 1
            rotation: modelData
            antialiasing: true
            color: area.pressed ? "#000000" : "#ffffff"
        }
    }

    MouseArea {
        id: area

        anchors.fill: parent
        hoverEnabled: true
        cursorShape: Qt.PointingHandCursor
        onClicked: {
            scrolling.to = Math.max(button.begin, Math.min(button.end,
                button.flickable.contentX + button.direction * Math.max(60, 0.8 * button.flickable.width)));
            scrolling.restart();
        }
    }

    NumberAnimation {
        id: scrolling

        target: button.flickable
        property: "contentX"
        duration: 300
        easing.type: Easing.OutCubic
    }
}
