pragma ComponentBehavior: Bound

import QtQuick
import ZelvanoUI.Interface

// Two columns of video cells that scroll downwards, on the host's own background.
ZVItemView {
    id: list

    // The ZVListView that fills this view.
    required property var owner

    width: 320
    height: 480
    clip: true
    activeFocusOnTab: count > 0
    columns: 2
    mirrored: LayoutMirroring.enabled
    scroller: scroller

    Accessible.role: Accessible.List
    Accessible.name: qsTr("Recommended videos")

    LayoutMirroring.childrenInherit: true
    // In a left-to-right application the host's items decide. Qt 6.4's qmllint does not know the direction.
    Binding {
        target: list.LayoutMirroring
        property: "enabled"
        value: true
        when: Qt.application.layoutDirection === Qt.RightToLeft // qmllint disable type
    }

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
