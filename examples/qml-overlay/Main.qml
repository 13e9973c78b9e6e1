import QtQuick
import QtMultimedia
// [attach]
import ZelvanoUI
// [attach]

Window {
    id: window
    required property url video
    required property string service
    width: output.width + events.width
    height: output.height
    visible: true
    Component.onCompleted: RecommendationService.address = service // A sandbox. Leave it out in production.

    // [attach]
    MediaPlayer { id: media; source: window.video; videoOutput: output; Component.onCompleted: play() }
    VideoOutput { id: output; width: 880; height: 495 }
    // [attach]
    TapHandler { onTapped: media.playbackState === MediaPlayer.PlayingState ? media.pause() : media.play() }

    // [attach]
    Recommendations {
        id: recommendations
        apiKey: "your-api-key"
        pageId: "page-42"
        suggestionCount: 8
        player: media
        onVideoSelected: video => console.info("Next:", video.title)
    }
    // [attach]

    // [inspect]
    EventTimeline {
        id: events
        x: output.width
        width: 380
        height: output.height
        log: EventLog { recommendations: recommendations }
    }
    // [inspect]
}
