pragma ComponentBehavior: Bound

import QtQuick
import ZelvanoUI.Interface

// A table of categories that scrolls downwards, on the host's own background.
ZVItemView {
    id: table

    // The ZVCategoryView that fills this view.
    required property var owner

    width: 320
    height: 480
    clip: true
    activeFocusOnTab: count > 0
    badged: false
    mirrored: LayoutMirroring.enabled
    scroller: scroller

    Accessible.role: Accessible.List
    Accessible.name: qsTr("Recommended videos by category")

    LayoutMirroring.childrenInherit: true
    // In a left-to-right application the host's items decide. Qt 6.4's qmllint does not know the direction.
    Binding {
        target: table.LayoutMirroring
        property: "enabled"
        value: true
        when: Qt.application.layoutDirection === Qt.RightToLeft // qmllint disable type
    }

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
