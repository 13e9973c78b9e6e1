import QtQuick
import QtMultimedia
import ZelvanoUI

Window {
    id: window
    required property url video
    required property string service
    width: output.width
    height: output.height
    visible: true

    MediaPlayer { id: media; source: window.video; videoOutput: output; Component.onCompleted: play() }
    VideoOutput { id: output; width: 880; height: 495 }
    TapHandler { onTapped: media.playbackState === MediaPlayer.PlayingState ? media.pause() : media.play() }

    Recommendations {
        apiKey: "your-api-key"
        pageId: "page-42"
        suggestions: 8
        player: media
        serviceAddress: window.service
        onVideoSelected: video => console.info("Next:", video.title)
    }
}
