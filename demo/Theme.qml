pragma Singleton

import QtQuick

// The demo's colours: light or dark, as the application's palette is.
QtObject {
    readonly property SystemPalette system: SystemPalette {}
    readonly property bool dark: system.window.hslLightness < 0.5

    readonly property color background: dark ? "#14161c" : "#f3f4f8"
    readonly property color panel: dark ? "#1b1e26" : "#ffffff"
    readonly property color line: dark ? "#2a2e39" : "#d5d9e3"
    readonly property color text: dark ? "#eceef4" : "#171a22"
    readonly property color faint: dark ? "#8b91a3" : "#5d6475"
    readonly property color accent: dark ? "#ff5a5f" : "#e23b43"
}
