pragma ComponentBehavior: Bound

import QtQuick

// Two columns of video cells that scroll downwards.
ZVNativeView {
    id: list

    columns: 2
    scroller: scroller

    Accessible.name: qsTr("Recommended videos")

    ListView {
        id: scroller

        anchors.fill: parent
        topMargin: list.inset
        bottomMargin: list.inset
        spacing: list.inset
        boundsBehavior: Flickable.DragOverBounds
        cacheBuffer: height / 2
        reuseItems: true
        currentIndex: -1 // Its line would never be reused.
        model: list.lines

        delegate: Item {
            id: line

            required property int index
            property bool shown: true
            readonly property bool mirrored: list.LayoutMirroring.enabled

            width: scroller.width
            height: Math.max(first.height, second.visible ? second.height : 0)

            ListView.onPooled: shown = false
            ListView.onReused: shown = true

            ZVVideoCollectionViewCell {
                id: first

                x: line.mirrored ? line.width - list.inset - width : list.inset
                view: list
                row: line.shown ? 2 * line.index : -1
            }
            ZVVideoCollectionViewCell {
                id: second

                x: line.mirrored ? first.x - list.inset - width : first.x + first.width + list.inset
                view: list
                row: line.shown ? 2 * line.index + 1 : -1
            }
        }
    }

    ZVCurrentMark {
        cell: list.currentCell
    }

    ZVScrollBar {
        flickable: scroller
    }
}
