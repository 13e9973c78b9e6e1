pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls.Basic

// Play, seek and time of the host's player. A player with its own controls gets only the title.
Item {
    id: controls

    required property var deck // Null before there is a player.
    property string caption

    readonly property bool playing: deck?.playing ?? false
    readonly property bool complete: !(deck?.hasControls ?? false)

    implicitHeight: complete ? 104 : 72

    function toggle() {
        if (playing)
            deck.pause();
        else
            deck.play();
    }

    function clock(time) {
        const seconds = Math.floor(time);
        return Math.floor(seconds / 60) + ":" + String(seconds % 60).padStart(2, "0");
    }

    // Of a player's duration and position Qt 6.4's qmllint does not know the type.
    Slider {
        id: slider
        x: 24
        y: 10
        width: parent.width - 2 * x
        height: 20
        padding: 0
        visible: controls.complete
        to: Math.max(0.001, controls.deck?.duration ?? 0)
        value: controls.deck?.position ?? 0
        onMoved: controls.deck.position = value
        Accessible.name: qsTr("Position")

        background: Rectangle {
            y: (slider.height - height) / 2
            width: slider.width
            height: 4
            radius: 2
            color: Theme.line

            Rectangle {
                width: slider.visualPosition * parent.width
                height: parent.height
                radius: 2
                color: Theme.accent
            }
        }
        // Time runs to the right in every language.
        LayoutMirroring.enabled: false

        handle: Rectangle {
            x: slider.visualPosition * (slider.width - width)
            y: (slider.height - height) / 2
            width: 14
            height: 14
            radius: 7
            color: Theme.text
            border { width: slider.visualFocus ? 3 : 0; color: Theme.accent }
        }
    }

    AbstractButton {
        id: button
        anchors { left: parent.left; leftMargin: 24 }
        visible: controls.complete
        y: controls.complete ? 42 : 12
        width: 48
        height: 48
        focus: true
        onClicked: controls.toggle()
        Accessible.name: controls.playing ? qsTr("Pause") : qsTr("Play")

        background: Rectangle {
            radius: width / 2
            color: button.down ? Qt.darker(Theme.accent, 1.2) : Theme.accent
            border { width: button.visualFocus ? 3 : 0; color: Theme.text }
        }
        contentItem: Item {
            Row {
                visible: controls.playing
                anchors.centerIn: parent
                spacing: 5
                Rectangle { width: 5; height: 18; radius: 1; color: "white" }
                Rectangle { width: 5; height: 18; radius: 1; color: "white" }
            }
            Canvas {
                LayoutMirroring.enabled: false
                visible: !controls.playing
                anchors { centerIn: parent; horizontalCenterOffset: 2 }
                width: 18
                height: 20
                onPaint: {
                    const context = getContext("2d");
                    context.fillStyle = "white";
                    context.beginPath();
                    context.moveTo(0, 0);
                    context.lineTo(width, height / 2);
                    context.lineTo(0, height);
                    context.closePath();
                    context.fill();
                }
            }
        }
    }

    Text {
        anchors { left: button.visible ? button.right : parent.left; leftMargin: button.visible ? 16 : 24 }
        anchors { right: time.left; rightMargin: 16; verticalCenter: button.verticalCenter }
        horizontalAlignment: Text.AlignLeft
        text: controls.caption
        textFormat: Text.PlainText
        elide: Text.ElideRight
        color: Theme.text
        font { pixelSize: controls.width < 480 ? 15 : 18; weight: Font.DemiBold }
    }

    Text {
        id: time
        anchors { right: parent.right; rightMargin: 24; verticalCenter: button.verticalCenter }
        visible: controls.complete
        text: controls.clock(controls.deck?.position ?? 0) + " / " + controls.clock(controls.deck?.duration ?? 0)
        color: Theme.faint
        font.pixelSize: 14
    }
}
