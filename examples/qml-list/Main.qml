pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls.Basic
import QtMultimedia
import ZelvanoUI

Window {
    id: window
    required property url video
    required property string service
    readonly property bool isPage: `${video}`.endsWith(".html") // Of a web player.
    width: 960; height: 440; visible: true
    Component.onCompleted: RecommendationService.address = service // A sandbox. Leave it out in production.

    MediaPlayer { id: media; source: window.isPage ? "" : window.video; videoOutput: output; onSourceChanged: play() }
    VideoOutput { id: output; width: 640; height: 360 }
    KalturaPlayer { id: web; source: window.isPage ? window.video : ""; visible: window.isPage; width: 640; height: 360 }

    Recommendations {
        id: recommendations
        active: consent.checked
        apiKey: "your-api-key"
        suggestionCount: 8
        player: window.isPage ? web : media
        playerKind: Recommendations.AVPlayer // Follows announceChoice(), below.
        window: window
        onPlayerEvent: event => console.info(event)
        onSessionEnded: reason => console.info(reason === Recommendations.Resized ? "resized" : "ended")
    }
    Row {
        y: output.height
        CheckBox { id: consent; text: "Recommend videos"; checked: true }
        Button { // As in a view of your own. The player of this kind switches, and you play it.
            text: "Next"
            onClicked: RecommendationService.announceChoice(recommendations.videos[0].url)
        }
        Button { text: "Hide"; visible: recommendations.overlayVisible; onClicked: recommendations.hideOverlay() }
        Text { text: recommendations.errorString; visible: recommendations.status === Recommendations.Failed }
    }

    // [list]
    RecommendationList {
        id: list
        x: output.width
        width: window.width - x
        height: window.height
        recommendations: recommendations
        onVideoSelected: video => recommendations.playNext(video)
        cellRadius: 12 // The look; as for the two lines below, the default will do.
        delegate: Text { required property recommendedVideo video; text: video.title; wrapMode: Text.Wrap }
        BusyIndicator { anchors.centerIn: parent; running: list.loading }
        Text { anchors.centerIn: parent; text: "No videos"; visible: list.empty }
    }
    // [list]
}
