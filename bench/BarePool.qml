pragma ComponentBehavior: Bound

import QtQuick
import ZelvanoUI.Interface

// The list's picture with nothing behind it: Qt's own pooled view, in rows of two cells. Qt 6.4's qmllint does not know
// images.
ListView {
    id: pool

    readonly property real inset: 0.035 * width
    readonly property real cell: (width - 3 * inset) / 2

    component Cell: Item {
        id: content

        required property var video

        width: pool.cell
        height: pool.cell
        clip: true

        Rectangle {
            anchors.fill: parent
            radius: 8
            gradient: Gradient {
                GradientStop { position: 0; color: "#4a5162" }
                GradientStop { position: 1; color: "#2c313d" }
            }
        }

        ZVImageView {
            anchors.fill: parent
            radius: 8
            image: content.video.image // qmllint disable type
        }

        Rectangle {
            anchors { left: parent.left; right: parent.right; bottom: parent.bottom }
            height: Math.min(parent.height, title.height + 44)
            radius: 8
            gradient: Gradient {
                GradientStop { position: 0; color: "#00000000" }
                GradientStop { position: 0.5; color: "#80000000" }
                GradientStop { position: 1; color: "#d9000000" }
            }
        }

        Text {
            id: title
            anchors { left: parent.left; right: holder.left; bottom: parent.bottom }
            anchors { leftMargin: 10; rightMargin: 8; bottomMargin: 9 }
            text: content.video.title
            textFormat: Text.PlainText
            wrapMode: Text.Wrap
            maximumLineCount: 2
            elide: Text.ElideRight
            color: "#ffffff"
            font { pixelSize: Math.round(0.05 * content.width); weight: Font.DemiBold }
        }

        Rectangle {
            id: holder
            anchors { right: parent.right; bottom: parent.bottom; margins: 8 }
            width: duration.implicitWidth + 10
            height: 18
            radius: 4
            color: "#b3000000"

            Text {
                id: duration
                anchors.centerIn: parent
                text: content.video.duration
                textFormat: Text.PlainText
                color: "#ffffff"
                font { pixelSize: 11; weight: Font.Medium }
            }
        }

        Rectangle {
            anchors { left: parent.left; top: parent.top; margins: 8 }
            width: Math.max(height, badge.implicitWidth + 12)
            height: 20
            radius: 10
            color: content.video.color

            Text {
                id: badge
                anchors.centerIn: parent
                text: content.video.badge
                textFormat: Text.PlainText
                color: "#ffffff"
                style: Text.Raised
                styleColor: "#99000000"
                font { pixelSize: 11; weight: Font.Bold }
            }
        }

        Rectangle {
            anchors.fill: parent
            radius: 8
            color: tap.pressed ? "#40000000" : hover.hovered ? "#1fffffff" : "transparent"
        }

        HoverHandler {
            id: hover
        }

        TapHandler {
            id: tap
        }
    }

    clip: true
    reuseItems: true
    cacheBuffer: height / 2
    spacing: inset
    topMargin: inset
    bottomMargin: inset

    delegate: Row {
        id: line

        required property var first
        required property var second

        x: pool.inset
        spacing: pool.inset

        Cell {
            video: line.first
        }
        Cell {
            video: line.second
        }
    }
}
