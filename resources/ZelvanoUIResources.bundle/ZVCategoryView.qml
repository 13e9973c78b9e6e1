pragma ComponentBehavior: Bound

import QtQuick

// A table of categories that scrolls downwards.
ZVNativeView {
    id: table

    badged: false
    scroller: scroller

    Accessible.name: qsTr("Recommended videos by category")

    ListView {
        id: scroller

        anchors.fill: parent
        boundsBehavior: Flickable.DragOverBounds
        cacheBuffer: height / 2
        reuseItems: true
        currentIndex: -1 // Its line would never be reused.
        model: table.lines

        delegate: ZVRecommendationTableViewCell {
            required property int index
            property bool shown: true

            view: table
            row: shown ? index : -1

            ListView.onPooled: shown = false
            ListView.onReused: shown = true
        }
    }

    ZVScrollBar {
        flickable: scroller
    }
}
