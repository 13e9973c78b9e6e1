pragma ComponentBehavior: Bound

import QtQuick
import ZelvanoUI.Interface

// A category's name over its videos, which scroll sideways. The name has the host's text colour.
Item {
    id: row

    // The cell.
    required property var owner

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
        direction: Qt.Horizontal
        itemSize: Qt.size(232, 130)
        spacing: 12
        inset: 0
        clip: true
        mirrored: LayoutMirroring.enabled
        scroller: scroller

        Flickable {
            id: scroller

            anchors.fill: parent
            leftMargin: 16
            rightMargin: 16
            contentWidth: videos.contentSize.width
            contentHeight: height
            flickableDirection: Flickable.HorizontalFlick
            boundsBehavior: Flickable.DragOverBounds
        }
    }
}
