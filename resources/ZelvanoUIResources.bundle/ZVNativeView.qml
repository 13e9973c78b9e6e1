import QtQuick
import ZelvanoUI.Interface

// What the native views share: they scroll downwards, on the host's own background.
ZVItemView {
    id: view

    // The ZVListView or ZVCategoryView that fills this view.
    required property var owner

    width: 320
    height: 480
    clip: true
    activeFocusOnTab: count > 0
    mirrored: LayoutMirroring.enabled

    Accessible.role: Accessible.List

    LayoutMirroring.childrenInherit: true
    // In a left-to-right application the host's items decide. Qt 6.4's qmllint does not know the direction.
    Binding {
        target: view.LayoutMirroring
        property: "enabled"
        value: true
        when: Qt.application.layoutDirection === Qt.RightToLeft // qmllint disable type
    }
}
