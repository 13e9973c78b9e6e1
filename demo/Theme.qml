pragma Singleton

import QtQuick

// The demo's colours.
QtObject {
    readonly property color background: "#14161c"
    readonly property color panel: "#1b1e26"
    readonly property color line: "#2a2e39"
    readonly property color text: "#eceef4"
    readonly property color faint: "#8b91a3"
    readonly property color accent: "#ff5a5f"

    readonly property var kinds: ({
        request: "#5aa9ff",
        response: "#3d6f9f",
        listener: "#5fd38d",
        delegate: "#ffb454",
        notification: "#d98cff",
        overlay: "#ff5a5f",
        player: "#8be9e0",
        log: "#6b7183",
        script: "#c9cdd8"
    })
}
