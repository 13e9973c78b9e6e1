import QtQuick
import QtMultimedia

Window {
    width: 960
    height: 405
    visible: true

    MediaPlayer {
        objectName: "mediaPlayer"
        videoOutput: output
    }
    VideoOutput {
        id: output
        objectName: "videoOutput"
        width: 640
        height: 360
    }
    Item {
        objectName: "place"
        x: 640
        width: 320
        height: 405
    }
}
