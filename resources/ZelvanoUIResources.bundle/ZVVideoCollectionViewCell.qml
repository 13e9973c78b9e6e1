pragma ComponentBehavior: Bound

import QtQuick
import ZelvanoUI.Interface

// One video: an image under a badge, the title and the length. It has colours of its own, for light and dark hosts. All
// sizes follow the cell's width, as the title's does.
VideoCell {
    id: content

    readonly property real unit: width / 100
    readonly property real margin: Math.round(3.5 * unit)
    readonly property real corner: view?.cellRadius >= 0 ? view.cellRadius : Math.min(margin + 3, 12)
    readonly property real smallText: Math.max(1, Math.round(4.5 * unit))
    readonly property color ground: view?.cellColor ?? "#2c313d"
    readonly property color ink: view?.titleColor ?? "#ffffff"

    width: 160
    height: 160

    function joined(texts: var): string {
        return texts.filter(text => text !== "").join(", ");
    }

    Accessible.role: Accessible.ListItem
    Accessible.name: joined([titleLable.text, durationLabel.text, categoryName,
                             view ? qsTr("%1 of %2").arg(row + 1).arg(view.count) : ""])
    Accessible.focusable: true
    Accessible.focused: current
    Accessible.onPressAction: choose()

    Rectangle {
        visible: !content.clip
        x: content.shadowOffset.width
        y: content.shadowOffset.height
        width: parent.width
        height: parent.height
        radius: content.corner + content.shadowRadius
        color: "#000000"
        opacity: content.shadowOpacity / 3
    }

    // Visible without an image.
    Rectangle {
        visible: !content.shownByHost
        anchors.fill: parent
        radius: content.corner
        gradient: Gradient {
            GradientStop { position: 0; color: Qt.lighter(content.ground, 1.6) }
            GradientStop { position: 1; color: content.ground }
        }
    }

    ZVImageView {
        objectName: "iconImageView"
        visible: !content.shownByHost
        anchors.fill: parent
        radius: content.corner
        opacity: 0
    }

    // Makes white text readable on any image.
    Rectangle {
        visible: !content.shownByHost
        anchors { left: parent.left; right: parent.right; bottom: parent.bottom }
        height: Math.min(parent.height, titleLable.height + 18 * content.unit)
        radius: content.corner
        gradient: Gradient {
            GradientStop { position: 0; color: "#00000000" }
            GradientStop { position: 0.5; color: "#80000000" }
            GradientStop { position: 1; color: "#d9000000" }
        }
    }

    Text {
        id: titleLable

        objectName: "titleLable"
        visible: !content.shownByHost
        anchors { left: parent.left; right: durationHolder.left; bottom: parent.bottom; margins: content.margin }
        textFormat: Text.PlainText
        wrapMode: Text.Wrap
        maximumLineCount: 2
        elide: Text.ElideRight
        color: content.ink
        font.weight: Font.DemiBold
    }

    Rectangle {
        id: durationHolder

        anchors { right: parent.right; bottom: parent.bottom; margins: content.margin }
        visible: durationLabel.text !== "" && !content.shownByHost
        width: visible ? durationLabel.implicitWidth + 1.6 * radius : 0
        height: durationLabel.implicitHeight + 0.4 * radius
        radius: 2.5 * content.unit
        color: "#b3000000"

        Text {
            id: durationLabel

            objectName: "durationLabel"
            anchors.centerIn: parent
            textFormat: Text.PlainText
            color: "#ffffff"
            font { pixelSize: content.smallText; weight: Font.Medium }
        }
    }

    Rectangle {
        id: badge

        objectName: "valueHolderView"
        anchors { left: parent.left; top: parent.top; margins: content.margin }
        visible: content.badged && !content.shownByHost
        width: Math.max(height, valueLabel.implicitWidth + height / 2)
        height: Math.round(8 * content.unit)
        color: "transparent"

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
            textFormat: Text.PlainText
            color: "#ffffff"
            style: Text.Raised
            styleColor: "#99000000"
            font { pixelSize: content.smallText; weight: Font.Bold }
        }
    }

    Rectangle {
        anchors.fill: parent
        radius: content.corner
        color: tap.pressed ? "#40000000" : hover.hovered ? "#1fffffff" : "transparent"
    }

    // Two rings: one is visible on any image.
    Rectangle {
        visible: content.current
        anchors.fill: parent
        radius: content.corner
        color: "transparent"
        border { width: 3; color: content.palette.highlight }

        Rectangle {
            anchors { fill: parent; margins: 3 }
            radius: content.corner - 3
            color: "transparent"
            border { width: 1; color: "#ffffff" }
        }
    }

    HoverHandler {
        id: hover
        cursorShape: Qt.PointingHandCursor
    }

    TapHandler {
        id: tap
        onPressedChanged: if (pressed) content.pressBegan()
        onTapped: content.activate()
    }
}
