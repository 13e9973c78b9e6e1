pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls.Basic
import QtMultimedia

// Play, seek and time of the host's player.
Item {
    id: controls

    required property MediaPlayer player
    property string caption

    readonly property bool playing: player.playbackState === MediaPlayer.PlayingState

    implicitHeight: 104

    function toggle() {
        if (playing)
            player.pause();
        else
            player.play();
    }

    function clock(milliseconds) {
        const seconds = Math.floor(milliseconds / 1000);
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
        to: Math.max(1, controls.player.duration) // qmllint disable type
        value: controls.player.position // qmllint disable type
        onMoved: controls.player.position = value
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
        x: 24
        y: 42
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
        anchors { left: button.right; leftMargin: 16; right: time.left; rightMargin: 16; verticalCenter: button.verticalCenter }
        text: controls.caption
        elide: Text.ElideRight
        color: Theme.text
        font { pixelSize: 18; weight: Font.DemiBold }
    }

    Text {
        id: time
        anchors { right: parent.right; rightMargin: 24; verticalCenter: button.verticalCenter }
        text: controls.clock(controls.player.position) + " / " + controls.clock(controls.player.duration) // qmllint disable type
        color: Theme.faint
        font.pixelSize: 14
    }
}
