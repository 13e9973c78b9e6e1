pragma ComponentBehavior: Bound

import QtQuick
import ZelvanoUI.Interface

// A category's name over its videos, which scroll sideways. The name has the host's text colour.
CategoryCell {
    id: categoryCell

    width: 320
    height: 188
    videosCollectionView: videos

    Accessible.role: Accessible.Grouping
    Accessible.name: categoryName

    // Keeps the service's code, for hosts. Users read the name.
    Text {
        objectName: "categoryLabel"
        visible: false
        text: categoryCell.category
        textFormat: Text.PlainText
        width: name.width
        height: name.height
    }

    Text {
        id: name

        x: 16
        y: 10
        width: parent.width - 2 * x
        height: 22
        text: categoryCell.categoryName
        horizontalAlignment: Text.AlignLeft // By layout direction, not by the name's language.
        verticalAlignment: Text.AlignVCenter
        textFormat: Text.PlainText
        maximumLineCount: 1
        elide: Text.ElideRight
        color: categoryCell.palette.windowText
        font { pixelSize: 15; weight: Font.DemiBold }
    }

    ZVItemView {
        id: videos

        objectName: "videosCollectionView"
        y: 38
        width: parent.width
        height: parent.height - y - 8
        clip: true
        mirrored: LayoutMirroring.enabled
        cellRadius: categoryCell.view?.cellRadius ?? -1
        cellColor: categoryCell.view?.cellColor ?? "#2c313d"
        titleColor: categoryCell.view?.titleColor ?? "#ffffff"
        badged: categoryCell.view?.badged ?? false
        scroller: scroller
        blocked: toLeft.pressed || toRight.pressed

        ListView {
            id: scroller

            anchors.fill: parent
            leftMargin: 16
            rightMargin: 16
            spacing: 12
            orientation: ListView.Horizontal
            boundsBehavior: Flickable.DragOverBounds
            cacheBuffer: width / 2
            reuseItems: true
            currentIndex: -1 // Its line would never be reused.
            model: videos.lines

            delegate: ZVVideoCollectionViewCell {
                required property int index
                property bool shown: true

                width: 232
                height: 130
                view: videos
                row: shown ? index : -1

                ListView.onPooled: shown = false
                ListView.onReused: shown = true
            }
        }

        ZVCurrentMark {
            cell: videos.currentCell
        }

        HoverHandler {
            id: hover
            acceptedDevices: PointerDevice.Mouse | PointerDevice.TouchPad
        }
        ZVScrollButton {
            id: toLeft

            flickable: scroller
            direction: -1
            hovered: hover.hovered
        }
        ZVScrollButton {
            id: toRight

            flickable: scroller
            direction: 1
            hovered: hover.hovered
        }
    }
}
