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

    MediaPlayer { id: media; source: window.video; videoOutput: output; Component.onCompleted: play() }
    VideoOutput { id: output; width: 640; height: 360 }

    Recommendations {
        id: recommendations
        apiKey: "your-api-key"
        pageId: "page-42"
        player: media
        serviceAddress: window.service
        onVideoSelected: video => playNext(video)
        onSuggestionsFetched: console.info(videos.length, "videos, the first:", videos[0]?.title)
    }

    RecommendationList {
        x: output.width
        width: window.width - x
        height: window.height
        focus: true
        recommendations: recommendations
    }
}
