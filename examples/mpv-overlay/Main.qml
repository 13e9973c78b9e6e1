import QtQuick
// [attach]
import ZelvanoUI
import ZelvanoUI.Mpv
// [attach]

Window {
    id: window
    required property url video
    required property string service
    width: 880
    height: 495
    visible: true
    Component.onCompleted: RecommendationService.address = service // A sandbox. Leave it out in production.

    // [attach]
    MpvVideo { id: mpv; anchors.fill: parent; source: window.video; Component.onCompleted: play() }
    Recommendations { apiKey: "your-api-key"; pageId: "page-42"; player: mpv }
    // [attach]
    TapHandler { onTapped: mpv.playing ? mpv.pause() : mpv.play() }
}
