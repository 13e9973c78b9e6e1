import QtQuick
import QtWebEngine

// A web page that can show and play, and nothing else: no windows, files, clipboard, permissions, dialogs or downloads.
// Every web view of the library is one of these.
WebEngineView {
    id: page

    // Called for each navigation; false refuses it. Only web addresses load, whatever it returns.
    property var allows: url => true

    function refuse(request: var) {
        request.accepted = true;
        request.dialogReject();
    }

    // Where the page is shown. The host crashes when a renderer process ends while its view is inside an invisible item,
    // so the page leaves such an item.
    required property Item frame

    // A loaded page draws its first frame here, outside the visible window: that frame takes ten times as long as others.
    property Item stage: frame.Window.contentItem

    parent: frame.visible ? frame : firstFrame.running ? stage : null
    x: parent === frame ? 0 : -width
    width: frame.width
    height: frame.height
    // Sets both edges at once: otherwise the page lays itself out twice, and shows both.
    anchors.fill: parent === frame ? frame : undefined

    objectName: "webView"
    activeFocusOnTab: true

    // The page leaves nothing behind and shares nothing with the host's own web views.
    profile: WebEngineProfile {
        offTheRecord: true
    }
    settings {
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

    Timer {
        id: firstFrame

        interval: 300 // Milliseconds.
    }

    LoggingCategory {
        id: pageLog

        name: "zelvano.page"
        defaultLogLevel: LoggingCategory.Critical // Off: every line is an info.
    }

    onJavaScriptConsoleMessage: (level, message, line, source) => console.info(pageLog, `${source}:${line}: ${message}`)
    onLoadingChanged: info => {
        if (info.status !== WebEngineView.LoadStartedStatus)
            firstFrame.start();
    }
    onNavigationRequested: request => {
        if (!allows(request.url) || !/^(https?|about|data|blob):/i.test(request.url.toString()))
            request.reject();
    }
    onFeaturePermissionRequested: (origin, feature) => grantFeaturePermission(origin, feature, false)
    onContextMenuRequested: request => request.accepted = true
    onJavaScriptDialogRequested: request => refuse(request)
    onAuthenticationDialogRequested: request => refuse(request)
    onColorDialogRequested: request => refuse(request)
    onFileDialogRequested: request => refuse(request)
}
