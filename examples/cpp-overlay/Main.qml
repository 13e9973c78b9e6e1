import QtQuick
import QtMultimedia

Window {
    width: 880
    height: 495
    visible: true
    color: "black"
    title: "Click to pause"

    MediaPlayer {
        id: player
        objectName: "mediaPlayer"
        videoOutput: output
    }
    VideoOutput {
        id: output
        objectName: "videoOutput"
        width: 880
        height: 495
    }
    TapHandler {
        onTapped: player.playbackState === MediaPlayer.PlayingState ? player.pause() : player.play()
    }
}
