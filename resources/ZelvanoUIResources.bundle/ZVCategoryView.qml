pragma ComponentBehavior: Bound

import QtQuick
import ZelvanoUI.Interface

// A table of categories that scrolls downwards, on the host's own background.
ZVTableView {
    id: table

    // The ZVCategoryView that fills this view.
    required property var owner

    width: 320
    height: 480
    clip: true
    mirrored: LayoutMirroring.enabled
    rowHeight: 188
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

    Flickable {
        id: scroller

        anchors.fill: parent
        contentWidth: width
        contentHeight: table.contentSize.height
        flickableDirection: Flickable.VerticalFlick
        boundsBehavior: Flickable.DragOverBounds
    }

    ZVScrollIndicator {
        flickable: scroller
    }
}
