pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls.Basic
import ZelvanoUI

// Shows an EventLog for a host's developers: requests, responses and events, as they occur. Uses the palette's colours.
Rectangle {
    id: timeline

    // The EventLog to show.
    required property var log

    readonly property color faint: Qt.alpha(palette.windowText, 0.6)
    readonly property var kindColors: ({
        request: "#3f8ae0",
        response: "#7a93ad",
        listener: "#2f9e5e",
        delegate: "#c77d1e",
        notification: "#a65ad1",
        overlay: "#e0484d",
        player: "#2b9aa0"
    })

    color: palette.window
    implicitWidth: 400
    implicitHeight: 480

    EventFilter {
        id: events
        sourceModel: timeline.log
        text: filter.text
    }

    TextField {
        id: filter
        objectName: "filter"
        anchors { left: parent.left; right: exportButton.left; top: parent.top; margins: 8 }
        height: 32
        placeholderText: qsTr("Filter %1 events").arg(timeline.log?.count ?? 0)
        Accessible.name: qsTr("Filter")
    }

    Button {
        id: exportButton
        anchors { right: clearButton.left; rightMargin: 6; verticalCenter: filter.verticalCenter }
        height: 32
        text: qsTr("Export")
        onClicked: {
            const file = timeline.log.exportToDownloads();
            notice.text = file.toString() ? qsTr("Written to %1").arg(file) : qsTr("The file could not be written.");
        }
    }

    Button {
        id: clearButton
        anchors { right: parent.right; rightMargin: 8; verticalCenter: filter.verticalCenter }
        height: 32
        text: qsTr("Clear")
        onClicked: {
            notice.text = "";
            timeline.log.clear();
        }
    }

    Text {
        id: notice
        anchors { left: parent.left; right: parent.right; top: filter.bottom; leftMargin: 12; rightMargin: 12 }
        height: text ? implicitHeight + 6 : 0
        elide: Text.ElideMiddle
        textFormat: Text.PlainText
        color: timeline.faint
        font.pixelSize: 12
    }

    ListView {
        id: list
        objectName: "events"
        anchors { left: parent.left; right: parent.right; top: notice.bottom; topMargin: 6; bottom: details.top }
        clip: true
        focus: true
        model: events
        currentIndex: -1
        boundsBehavior: Flickable.StopAtBounds
        highlightMoveDuration: 0
        keyNavigationEnabled: true
        activeFocusOnTab: true
        Keys.onEscapePressed: currentIndex = -1
        Accessible.role: Accessible.List
        Accessible.name: qsTr("Events")
        ScrollBar.vertical: ScrollBar {}

        // Follows the newest line unless the reader has scrolled up or picked a line.
        property bool following: true
        onMovementEnded: following = atYEnd
        // Qt 6.4's qmllint takes Qt.callLater() for a property.
        onCountChanged: if (following && currentIndex < 0) Qt.callLater(positionViewAtEnd) // qmllint disable type

        delegate: Rectangle {
            id: line

            required property int index
            required property string time
            required property string kind
            required property string title
            required property string detail
            required property string text

            readonly property color kindColor: timeline.kindColors[line.kind] ?? timeline.faint

            width: ListView.view.width
            height: 26
            color: ListView.isCurrentItem ? Qt.alpha(palette.highlight, 0.35) : "transparent"
            Accessible.role: Accessible.ListItem
            Accessible.name: `${time} ${kind} ${title} ${detail}`
            ListView.onIsCurrentItemChanged: if (ListView.isCurrentItem) details.text = line.text

            TapHandler {
                onTapped: list.currentIndex = list.currentIndex === line.index ? -1 : line.index
            }
            Text {
                id: stamp
                x: 12
                width: 46
                anchors.verticalCenter: parent.verticalCenter
                horizontalAlignment: Text.AlignRight
                text: line.time
                color: timeline.faint
                font.pixelSize: 12
            }
            Rectangle {
                id: dot
                anchors { left: stamp.right; leftMargin: 10; verticalCenter: parent.verticalCenter }
                width: 8
                height: 8
                radius: 4
                color: line.kindColor
            }
            Text {
                id: name
                anchors { left: dot.right; leftMargin: 10; verticalCenter: parent.verticalCenter }
                width: Math.min(implicitWidth, line.width - x - 12)
                text: line.title
                elide: Text.ElideRight
                maximumLineCount: 1
                textFormat: Text.PlainText
                color: line.kind === "log" || line.kind === "response" ? timeline.faint : palette.windowText
                font.pixelSize: 13
            }
            Text {
                anchors {
                    left: name.right; leftMargin: 8; right: parent.right; rightMargin: 12
                    verticalCenter: parent.verticalCenter
                }
                text: line.detail
                elide: Text.ElideRight
                maximumLineCount: 1
                textFormat: Text.PlainText
                color: line.kindColor
                font.pixelSize: 13
            }
        }
    }

    // All of the picked line.
    ScrollView {
        id: details

        property alias text: json.text

        anchors { left: parent.left; right: parent.right; bottom: parent.bottom }
        height: list.currentIndex < 0 ? 0 : Math.min(timeline.height * 0.4, json.implicitHeight)
        visible: height > 0

        background: Rectangle {
            color: Qt.alpha(details.palette.windowText, 0.05)

            Rectangle {
                width: parent.width
                height: 1
                color: Qt.alpha(details.palette.windowText, 0.2)
            }
        }

        TextArea {
            id: json
            objectName: "details"
            readOnly: true
            selectByMouse: true
            textFormat: TextEdit.PlainText
            wrapMode: TextEdit.Wrap
            font { family: "monospace"; pixelSize: 12 }
            Accessible.name: qsTr("Details")
        }
    }
}
