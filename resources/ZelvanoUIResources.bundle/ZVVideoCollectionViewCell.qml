pragma ComponentBehavior: Bound

import QtQuick
import ZelvanoUI.Interface

// One video: an image under a badge, the title and the length. It has colours of its own, for light and dark hosts. All
// sizes follow the cell's width, as the title's does. The cell's edge would cut off a shadow, so nothing draws one.
VideoCell {
    id: content

    readonly property real unit: width / 100
    readonly property real margin: Math.round(3.5 * unit)
    readonly property real corner: view?.cellRadius >= 0 ? view.cellRadius : Math.min(margin + 3, 12)
    readonly property real smallText: Math.max(1, Math.round(4.5 * unit))

    width: 160
    height: 160
    clip: true
    iconImageView: icon

    Accessible.role: Accessible.ListItem
    Accessible.name: spokenName
    Accessible.focusable: true
    Accessible.focused: view?.currentCell === content
    Accessible.onPressAction: content.view.choose(content.row)

    Item {
        anchors.fill: parent
        visible: !content.shownByHost

        Rectangle {
            visible: !icon?.covers || icon.opacity < 1
            anchors.fill: parent
            radius: content.corner
            color: content.view?.cellColor ?? "#2c313d"
        }

        ZVImageView {
            id: icon

            objectName: "iconImageView"
            anchors.fill: parent
            radius: content.corner
            shade: titleLable.height + 18 * content.unit // Makes white text readable on any image.
            opacity: 0
        }

        Text {
            id: titleLable

            objectName: "titleLable"
            anchors { left: parent.left; right: durationHolder.left; bottom: parent.bottom; margins: content.margin }
            text: content.title
            horizontalAlignment: Text.AlignLeft // By layout direction, not by the title's language.
            textFormat: Text.PlainText
            wrapMode: Text.Wrap
            maximumLineCount: 2
            elide: Text.ElideRight
            color: content.view?.titleColor ?? "#ffffff"
            font { pixelSize: Math.max(1, Math.round(5 * content.unit)); weight: Font.DemiBold }
        }

        Rectangle {
            id: durationHolder

            anchors { right: parent.right; bottom: parent.bottom; margins: content.margin }
            visible: durationLabel.text !== ""
            width: visible ? durationLabel.implicitWidth + 1.6 * radius : 0
            height: durationLabel.implicitHeight + 0.4 * radius
            radius: 2.5 * content.unit
            color: "#b3000000"

            Text {
                id: durationLabel

                objectName: "durationLabel"
                anchors.centerIn: parent
                text: content.duration
                textFormat: Text.PlainText
                color: "#ffffff"
                font { pixelSize: content.smallText; weight: Font.Medium }
            }
        }

        Rectangle {
            id: badge

            objectName: "valueHolderView"
            anchors { left: parent.left; top: parent.top; margins: content.margin }
            visible: content.view?.badged ?? true
            width: Math.max(height, valueLabel.implicitWidth + height / 2)
            height: Math.round(8 * content.unit)
            radius: 10
            color: content.categoryColor

            // An unknown category has no colour.
            Rectangle {
                visible: badge.color.a === 0
                anchors.fill: parent
                radius: badge.radius
                color: "#8c000000"
            }

            Text {
                id: valueLabel

                objectName: "valueLabel"
                anchors.centerIn: parent
                text: content.value
                textFormat: Text.PlainText
                color: "#ffffff"
                style: Text.Raised
                styleColor: "#99000000"
                font { pixelSize: content.smallText; weight: Font.Bold }
            }
        }
    }

    Rectangle {
        anchors.fill: parent
        radius: content.corner
        color: tap.pressed ? "#40000000" : hover.hovered ? "#1fffffff" : "transparent"
    }

    HoverHandler {
        id: hover
        cursorShape: Qt.PointingHandCursor
    }

    TapHandler {
        id: tap
        onPressedChanged: if (pressed) content.view.pressBegan()
        onTapped: content.view.activate(content.row)
    }
}
