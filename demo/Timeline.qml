pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls.Basic

// What was sent, answered and heard, as it happens.
Rectangle {
    id: timeline

    required property var model

    color: Theme.panel

    Rectangle {
        width: 1
        height: parent.height
        color: Theme.line
    }

    Text {
        id: heading
        x: 16
        y: 14
        text: qsTr("Timeline")
        color: Theme.text
        font { pixelSize: 15; weight: Font.DemiBold }
    }

    ListView {
        id: list
        anchors { fill: parent; topMargin: 44; leftMargin: 1 }
        clip: true
        model: timeline.model
        boundsBehavior: Flickable.StopAtBounds
        Accessible.role: Accessible.List
        Accessible.name: heading.text
        ScrollBar.vertical: ScrollBar {
            id: bar
        }

        // By the keyboard, too: the arrow keys scroll by lines, these two to an end.
        activeFocusOnTab: true
        keyNavigationEnabled: false
        Keys.onUpPressed: scroll(() => bar.decrease())
        Keys.onDownPressed: scroll(() => bar.increase())
        Keys.onPressed: event => {
            event.accepted = event.key === Qt.Key_Home || event.key === Qt.Key_End;
            if (event.accepted)
                scroll(event.key === Qt.Key_Home ? positionViewAtBeginning : positionViewAtEnd);
        }
        function scroll(move: var) {
            move();
            following = atYEnd;
        }

        Rectangle {
            visible: list.activeFocus
            anchors.fill: parent
            color: "transparent"
            border { width: 2; color: Theme.accent }
        }

        // Follows the newest line unless the reader has scrolled up.
        property bool following: true
        onMovementEnded: following = atYEnd
        // Qt 6.4's qmllint takes Qt.callLater() for a property.
        onCountChanged: if (following) Qt.callLater(positionViewAtEnd) // qmllint disable type

        delegate: Item {
            id: line

            required property string time
            required property string kind
            required property string title
            required property string detail

            width: ListView.view.width
            height: 26
            Accessible.role: Accessible.ListItem
            Accessible.name: `${time} ${kind} ${title} ${detail}`

            Text {
                id: stamp
                x: 15
                width: 46
                anchors.verticalCenter: parent.verticalCenter
                horizontalAlignment: Text.AlignRight
                text: line.time
                color: Theme.faint
                font.pixelSize: 12
            }
            Rectangle {
                id: dot
                anchors { left: stamp.right; leftMargin: 10; verticalCenter: parent.verticalCenter }
                width: 8
                height: 8
                radius: 4
                color: Theme.kinds[line.kind] ?? Theme.faint
            }
            Text {
                id: name
                anchors { left: dot.right; leftMargin: 10; verticalCenter: parent.verticalCenter }
                width: Math.min(implicitWidth, parent.width - x - 16)
                text: line.title
                elide: Text.ElideRight
                maximumLineCount: 1
                textFormat: Text.PlainText
                color: line.kind === "log" || line.kind === "response" ? Theme.faint : Theme.text
                font.pixelSize: 13
            }
            Text {
                anchors {
                    left: name.right; leftMargin: 8; right: parent.right; rightMargin: 16
                    verticalCenter: parent.verticalCenter
                }
                text: line.detail
                elide: Text.ElideRight
                maximumLineCount: 1
                textFormat: Text.PlainText
                color: Theme.kinds[line.kind] ?? Theme.faint
                font.pixelSize: 13
            }
        }
    }
}
