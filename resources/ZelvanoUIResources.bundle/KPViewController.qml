import QtQuick
import QtWebChannel
import QtWebEngine

// The Kaltura player's page and the channel between it and its owner.
Item {
    id: content

    // Receives the page's calls; null after its end.
    required property var owner

    // Calls a function of the page's player. Does nothing before the page has a player.
    function call(name: var, args: var) {
        page.runJavaScript(`window.kPlayer?.${name}(...${JSON.stringify(args)})`);
    }

    function evaluate(expression: var, call: var) {
        page.runJavaScript(`window.kPlayer?.evaluate(${JSON.stringify(expression)})`,
                           value => content.owner?.expressionDidEvaluate(call, value));
    }

    QtObject {
        id: host

        WebChannel.id: "kHost" // qmllint disable type

        function mediaDidChange(media) {
            content.owner?.mediaDidChange(Object(media));
        }
        function loadStateDidChange(state) {
            content.owner?.loadStateDidChange(Number(state) | 0);
        }
        function playbackStateDidChange(state) {
            content.owner?.playbackStateDidChange(Number(state) | 0);
        }
        function eventDidFire(event, params) {
            content.owner?.eventDidFire(String(event), params);
        }
    }

    Item {
        id: place

        anchors.fill: parent

        ZVWebPage {
            id: page

            frame: place
            onRenderProcessTerminated: (status, code) => content.owner?.rendererDidEnd(status, code)
            backgroundColor: "black"
            settings.playbackRequiresUserGesture: false

            webChannel: WebChannel {
                registeredObjects: [host]
            }

            Component.onCompleted: {
                const script = WebEngine.script();
                script.name = "webChannel";
                script.sourceUrl = "qrc:///qtwebchannel/qwebchannel.js";
                script.injectionPoint = WebEngineScript.DocumentCreation;
                script.worldId = WebEngineScript.MainWorld;
                userScripts.insert(script);
            }
        }
    }
}
