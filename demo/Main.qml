pragma ComponentBehavior: Bound

import QtQuick
import QtMultimedia
import ZelvanoUI

// The host's screen. Wide: video and controls on the left, the timeline on the right. With a native view, that is on the
// right and the timeline below the video. Narrow: the native view, or else the timeline, below the video.
Window {
    id: window

    required property var host

    readonly property bool wide: width >= 900
    readonly property bool fullscreen: visibility === Window.FullScreen
    readonly property bool hasNativeView: host.hasNativeView
    readonly property real sideWidth: !wide ? width : hasNativeView ? Math.round(width * 0.42) : Math.min(400, width * 0.32)

    width: 1280
    height: 720
    minimumWidth: 320
    minimumHeight: 320
    visible: true
    title: qsTr("ZelvanoUI demo")
    color: Theme.background
    // The video stays in the window's left corner: see below. Qt 6.4's qmllint does not know the direction.
    LayoutMirroring.enabled: Qt.application.layoutDirection === Qt.RightToLeft // qmllint disable type
    LayoutMirroring.childrenInherit: true
    palette {
        window: Theme.background; windowText: Theme.text; highlight: Theme.accent
        base: Theme.panel; text: Theme.text; placeholderText: Theme.faint
        button: Theme.line; buttonText: Theme.text; mid: Theme.line
    }

    MediaPlayer {
        id: mediaPlayer
        objectName: "mediaPlayer"
        videoOutput: videoOutput
    }

    // At the left edge: the library computes the overlay's frame for a player there.
    Rectangle {
        width: videoOutput.width
        height: videoOutput.height
        color: "black"
    }

    VideoOutput {
        id: videoOutput
        objectName: "videoOutput"
        width: window.wide && !window.fullscreen ? window.width - window.sideWidth : window.width
        height: window.fullscreen ? window.height : Math.min(width * 9 / 16, window.height - controls.height)
    }

    // A web player's page.
    Item {
        objectName: "webPlace"
        width: videoOutput.width
        height: videoOutput.height
    }

    Text {
        anchors.centerIn: videoOutput
        text: window.host.notice
        textFormat: Text.PlainText
        color: "white"
        font.pixelSize: 16
    }

    TapHandler {
        parent: videoOutput
        enabled: controls.complete
        onTapped: controls.toggle()
    }

    Controls {
        id: controls
        visible: !window.fullscreen
        deck: window.host.deck
        caption: window.host.title
        y: videoOutput.height
        width: videoOutput.width
    }

    Text {
        visible: window.wide && !window.hasNativeView && !window.fullscreen
        y: controls.y + controls.height
        x: 24
        width: videoOutput.width - 2 * x
        height: Math.max(0, window.height - y - 16)
        horizontalAlignment: Text.AlignLeft
        wrapMode: Text.Wrap
        textFormat: Text.StyledText
        color: Theme.faint
        font.pixelSize: 13
        text: controls.complete
              ? qsTr("Pause the video: half a second later further videos are laid over it. Pick one, swipe them away, " +
                     "or press Escape.")
              : qsTr("Pause the video: the player's own plug-in shows further videos. Pick one, and the host plays it.")
    }

    Item {
        objectName: "nativePlace"
        visible: window.hasNativeView && !window.fullscreen
        x: window.wide ? videoOutput.width : 0
        y: window.wide ? 0 : controls.y + controls.height
        width: window.sideWidth
        height: window.height - y
    }

    EventTimeline {
        visible: (window.wide || !window.hasNativeView) && !window.fullscreen
        log: window.host.log
        LayoutMirroring.enabled: false // JSON is written from left to right.
        LayoutMirroring.childrenInherit: true
        x: window.wide && !window.hasNativeView ? videoOutput.width : 0
        y: window.wide && !window.hasNativeView ? 0 : controls.y + controls.height
        width: window.hasNativeView ? videoOutput.width : window.sideWidth
        height: window.height - y
    }
}
