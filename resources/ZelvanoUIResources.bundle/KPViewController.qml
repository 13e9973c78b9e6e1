import QtQuick
import QtWebChannel
import QtWebEngine

// The Kaltura player's page, and the way between it and its owner.
Item {
    id: content

    // The player. What the page tells goes there.
    required property var owner

    // A function of the page's player; nothing happens before the page has one.
    function call(name: var, args: var) {
        page.runJavaScript(`window.kPlayer?.${name}(...${JSON.stringify(args)})`);
    }

    function evaluate(expression: var, call: var) {
        page.runJavaScript(`window.kPlayer?.evaluate(${JSON.stringify(expression)})`,
                           value => content.owner.expressionDidEvaluate(call, value));
    }

    QtObject {
        id: host

        WebChannel.id: "kHost" // qmllint disable type

        function mediaDidChange(media) {
            content.owner.mediaDidChange(Object(media));
        }
        function loadStateDidChange(state) {
            content.owner.loadStateDidChange(Number(state) | 0);
        }
        function playbackStateDidChange(state) {
            content.owner.playbackStateDidChange(Number(state) | 0);
        }
        function eventDidFire(event, params) {
            content.owner.eventDidFire(String(event), params);
        }
    }

    WebEngineView {
        id: page

        objectName: "webView"
        anchors.fill: parent
        activeFocusOnTab: true
        backgroundColor: "black"

        webChannel: WebChannel {
            registeredObjects: [host]
        }
        // Nothing of the page outlives it, and it shares nothing with the host's own web views.
        profile: WebEngineProfile {
            offTheRecord: true
        }
        settings {
            playbackRequiresUserGesture: false
            localContentCanAccessFileUrls: false
            localContentCanAccessRemoteUrls: false
            javascriptCanOpenWindows: false
            javascriptCanAccessClipboard: false
            pluginsEnabled: false
            fullScreenSupportEnabled: false
            errorPageEnabled: false
            focusOnNavigationEnabled: false
            showScrollBars: false
        }

        Component.onCompleted: {
            const script = WebEngine.script();
            script.name = "webChannel";
            script.sourceUrl = "qrc:///qtwebchannel/qwebchannel.js";
            script.injectionPoint = WebEngineScript.DocumentCreation;
            script.worldId = WebEngineScript.MainWorld;
            userScripts.insert(script);
        }

        onNavigationRequested: request => {
            if (!/^(https?|about|data|blob):/i.test(request.url.toString()))
                request.reject();
        }
        onFeaturePermissionRequested: (origin, feature) => grantFeaturePermission(origin, feature, false)
        onContextMenuRequested: request => request.accepted = true
        onJavaScriptDialogRequested: request => {
            request.accepted = true;
            request.dialogReject();
        }
        onAuthenticationDialogRequested: request => {
            request.accepted = true;
            request.dialogReject();
        }
        onColorDialogRequested: request => {
            request.accepted = true;
            request.dialogReject();
        }
        onFileDialogRequested: request => {
            request.accepted = true;
            request.dialogReject();
        }
    }
}
