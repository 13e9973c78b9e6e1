pragma ComponentBehavior: Bound

import QtQuick
import ZelvanoUI.Interface

// A category's name over its videos, which scroll sideways. The name has the host's text colour.
CategoryCell {
    id: row

    width: 320
    height: 188

    Accessible.role: Accessible.Grouping
    Accessible.name: label.text

    Text {
        id: label

        objectName: "categoryLabel"
        x: 16
        y: 12
        width: parent.width - 2 * x
        height: 20
        horizontalAlignment: Text.AlignLeft // By layout direction, not by the name's language.
        verticalAlignment: Text.AlignVCenter
        textFormat: Text.PlainText
        maximumLineCount: 1
        elide: Text.ElideRight
        color: row.palette.windowText
        font { pixelSize: 13; weight: Font.DemiBold; letterSpacing: 1 }
    }

    ZVCollectionView {
        id: videos

        objectName: "videosCollectionView"
        y: 38
        width: parent.width
        height: parent.height - y - 8
        clip: true
        mirrored: LayoutMirroring.enabled
        scroller: scroller

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
                z: index

                ListView.onPooled: shown = false
                ListView.onReused: shown = true
            }
        }
    }
}
