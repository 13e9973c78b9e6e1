import QtQuick
import QtMultimedia
import ZelvanoUI

Window {
    id: window
    required property url video
    required property string service
    width: 960
    height: 405
    visible: true
    Component.onCompleted: RecommendationService.address = service

    MediaPlayer { id: media; source: window.video; videoOutput: output; Component.onCompleted: play() }
    VideoOutput { id: output; width: 640; height: 360 }

    Recommendations {
        id: recommendations
        apiKey: "your-api-key"
        player: media
    }

    // [list]
    RecommendationList {
        x: output.width
        width: window.width - x
        height: window.height
        recommendations: recommendations
        onVideoSelected: video => recommendations.playNext(video)
    }
    // [list]
}
