pragma ComponentBehavior: Bound

import QtQuick
import QtWebEngine

// The overlay's content: the layout page, swipes to both sides, and a control that closes it.
ZVTopRecommendationContentView {
    id: content

    // The overlay; null after it has removed this content.
    required property var owner

    readonly property bool shown: owner !== null && owner.visible

    // The page leaves room for the close control at its right, in right-to-left languages too.
    LayoutMirroring.enabled: false
    LayoutMirroring.childrenInherit: true

    Accessible.role: Accessible.Pane
    Accessible.name: qsTr("Recommended videos")

    Item {
        id: place

        anchors.fill: parent

        // Rounds the corners outside the page, whatever the page's layout is. Qt Quick's software renderer has no
        // shaders: there the corners stay square.
        layer.enabled: GraphicsInfo.api !== GraphicsInfo.Software
        layer.effect: ShaderEffect {
            readonly property real radius: content.owner ? content.owner.cornerRadius * Screen.devicePixelRatio : 0
            readonly property size size: Qt.size(width * Screen.devicePixelRatio, height * Screen.devicePixelRatio)

            // Compiled into the library: a host's own bundle in a folder lacks it.
            fragmentShader: "qrc:/ZelvanoUIResources.bundle/ZVRoundedCorners.frag.qsb"
        }

        ZVWebPage {
            id: page

            frame: place
            onRenderProcessTerminated: (status, code) => content.owner?.rendererDidEnd(status, code)
            onLoadingChanged: info => {
                if (info.status === WebEngineView.LoadFailedStatus)
                    content.owner?.pageDidFail(info.errorCode, info.errorString);
            }
            backgroundColor: "transparent"
            zoomFactor: 1
            // Otherwise Chromium drops a command that the page sends by location.href, without asking.
            settings.unknownUrlSchemePolicy: WebEngineSettings.AllowAllUnknownUrlSchemes
            allows: url => content.owner !== null && content.owner.shouldStartLoadWithRequest(url)
        }
    }

    // Above the page, to see a press before the page does; it accepts none. One swipe per press.
    Item {
        anchors.fill: parent

        PointHandler {
            property bool recognized: false
            readonly property real threshold: 60

            enabled: content.shown && content.owner.shouldRecognizeSimultaneously()
            acceptedButtons: Qt.LeftButton
            onActiveChanged: {
                recognized = false;
                page.enabled = true;
            }
            onPointChanged: {
                const x = point.position.x - point.pressPosition.x;
                const y = point.position.y - point.pressPosition.y;
                if (!active || recognized || Math.abs(x) < threshold || Math.abs(x) < 2 * Math.abs(y))
                    return;
                recognized = true;
                // A moved finger taps nothing, but a mouse clicks where it is released.
                if (point.device.type === PointerDevice.Mouse)
                    page.enabled = false;
                content.owner.didSwipe(x < 0 ? 2 : 1);
            }
        }
    }

    // The hit area is larger than the visible circle, for thumbs.
    Item {
        id: dismiss

        objectName: "dismiss"
        anchors { top: parent.top; right: parent.right }
        width: 44
        height: 44
        activeFocusOnTab: true

        Accessible.role: Accessible.Button
        Accessible.name: qsTr("Close recommendations")
        Accessible.onPressAction: content.owner.dismissPressed()

        Keys.onSpacePressed: content.owner.dismissPressed()
        Keys.onReturnPressed: content.owner.dismissPressed()
        Keys.onEnterPressed: content.owner.dismissPressed()

        // Two rings: one is visible on any video.
        Rectangle {
            visible: dismiss.activeFocus
            anchors.centerIn: parent
            width: 38
            height: 38
            radius: 19
            color: "transparent"
            border { width: 5; color: "#000000" }

            Rectangle {
                anchors { fill: parent; margins: 1 }
                radius: width / 2
                color: "transparent"
                border { width: 3; color: "#ffffff" }
            }
        }

        Rectangle {
            anchors.centerIn: parent
            width: 28
            height: 28
            radius: 14
            color: tap.pressed ? "#e6ffffff" : hover.hovered ? "#66ffffff" : "#73000000"
            border { width: 1; color: "#59ffffff" }

            Repeater {
                model: [45, -45]

                Rectangle {
                    required property real modelData

                    anchors.centerIn: parent
                    width: 12
                    height: 2
                    radius: 1
                    rotation: modelData
                    antialiasing: true
                    color: tap.pressed ? "#000000" : "#ffffff"
                }
            }
        }

        HoverHandler {
            id: hover
            cursorShape: Qt.PointingHandCursor
        }

        TapHandler {
            id: tap
            gesturePolicy: TapHandler.ReleaseWithinBounds
            onTapped: content.owner.dismissPressed()
        }
    }
}
