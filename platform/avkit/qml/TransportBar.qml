import QtQuick
import AVKit 1.0

// Title, track and times at the lower edge.
Item {
    id: root

    property QtObject transport
    property string title
    property string hint
    property real unit: 1
    property real marginX: 0
    property real marginY: 0
    property color accent
    property string fontFamily
    // Above the margin.
    readonly property real contentHeight: times.height + track.height + 22 * unit
                                          + (heading.visible ? heading.height + 24 * unit : 0)

    Item {
        id: heading
        x: root.marginX
        width: parent.width - 2 * x
        height: 64 * root.unit
        anchors.bottom: track.top
        anchors.bottomMargin: 24 * root.unit
        visible: root.title !== "" || root.hint !== ""

        Label {
            anchors.left: parent.left
            anchors.right: hint.left
            anchors.rightMargin: 48 * root.unit
            anchors.verticalCenter: parent.verticalCenter
            text: root.title
            unit: root.unit
            size: 48
            font.family: root.fontFamily
            font.weight: Font.DemiBold
        }

        Row {
            id: hint
            anchors.right: parent.right
            anchors.verticalCenter: parent.verticalCenter
            anchors.verticalCenterOffset: 6 * root.unit
            spacing: 16 * root.unit
            visible: root.hint !== ""
            opacity: 0.75

            Label {
                text: root.hint
                unit: root.unit
                size: 28
                font.family: root.fontFamily
            }

            // A chevron down: the button that leads there.
            Item {
                width: 22 * root.unit
                height: 22 * root.unit
                anchors.verticalCenter: parent.verticalCenter

                Repeater {
                    model: [45, -45]

                    Rectangle {
                        required property real modelData
                        width: 15 * root.unit
                        height: 4 * root.unit
                        radius: height / 2
                        antialiasing: true
                        rotation: modelData
                        x: parent.width / 2 - width / 2 + (modelData > 0 ? -1 : 1) * 4.6 * root.unit
                        y: parent.height / 2 - height / 2
                    }
                }
            }
        }
    }

    Item {
        id: track
        x: root.marginX
        width: parent.width - 2 * x
        height: 10 * root.unit
        anchors.bottom: times.top
        anchors.bottomMargin: 22 * root.unit

        Rectangle {
            anchors.fill: parent
            radius: height / 2
            color: "#40ffffff"
        }

        Rectangle {
            x: track.width * root.transport.bufferedFrom
            width: track.width * Math.max(0, root.transport.bufferedTo - root.transport.bufferedFrom)
            height: parent.height
            radius: height / 2
            color: "#59ffffff"
        }

        Rectangle {
            width: Math.max(height, track.width * root.transport.position)
            height: parent.height
            radius: height / 2
            color: root.transport.scrubbing ? root.accent : "white"
        }

        // Where breaks are to come: higher than the line, and set off from it whatever its colour.
        Repeater {
            model: root.transport.marks

            Rectangle {
                required property real modelData
                x: Math.round(track.width * modelData - width / 2)
                width: 20 * root.unit
                height: 32 * root.unit
                radius: 6 * root.unit
                anchors.verticalCenter: parent.verticalCenter
                color: "#141414"

                Rectangle {
                    anchors.centerIn: parent
                    width: 12 * root.unit
                    height: 24 * root.unit
                    radius: 3 * root.unit
                    color: root.accent
                }
            }
        }

        // Where the programme is while the viewer looks elsewhere.
        Rectangle {
            x: track.width * root.transport.playing - width / 2
            width: 6 * root.unit
            height: 30 * root.unit
            radius: width / 2
            anchors.verticalCenter: parent.verticalCenter
            visible: root.transport.scrubbing
        }

        Rectangle {
            readonly property real size: (root.transport.scrubbing ? 36 : 24) * root.unit
            x: track.width * root.transport.position - width / 2
            width: size
            height: size
            radius: size / 2
            anchors.verticalCenter: parent.verticalCenter
            color: root.transport.scrubbing ? root.accent : "white"
        }
    }

    Item {
        id: times
        x: root.marginX
        width: parent.width - 2 * x
        height: 52 * root.unit
        anchors.bottom: parent.bottom
        anchors.bottomMargin: root.marginY

        // Under the knob, as far as there is room.
        Rectangle {
            id: now
            readonly property real end: parent.width - (left.width > 0 ? left.width + 28 * root.unit : 0)
            x: Math.max(0, Math.min(track.width * root.transport.position - width / 2, end - width))
            width: nowRow.width + (root.transport.scrubbing ? 36 * root.unit : 0)
            height: parent.height
            radius: height / 2
            visible: elapsed.text !== "" || root.transport.paused
            color: root.transport.scrubbing ? root.accent : "transparent"

            Row {
                id: nowRow
                anchors.centerIn: parent
                spacing: 16 * root.unit

                Row {
                    anchors.verticalCenter: parent.verticalCenter
                    spacing: 7 * root.unit
                    visible: root.transport.paused && !root.transport.scrubbing

                    Repeater {
                        model: 2

                        Rectangle {
                            width: 8 * root.unit
                            height: 26 * root.unit
                            radius: 2 * root.unit
                        }
                    }
                }

                Label {
                    id: elapsed
                    text: root.transport.elapsed
                    color: root.transport.scrubbing ? "#141414" : "white"
                    unit: root.unit
                    size: root.transport.scrubbing ? 40 : 34
                    font.family: root.fontFamily
                    font.weight: root.transport.scrubbing ? Font.Bold : Font.Medium
                }
            }
        }

        Item {
            id: left
            anchors.right: parent.right
            width: root.transport.live ? live.width : remaining.implicitWidth
            height: parent.height

            Label {
                id: remaining
                anchors.right: parent.right
                anchors.verticalCenter: parent.verticalCenter
                visible: !root.transport.live
                text: root.transport.remaining
                unit: root.unit
                size: 34
                font.family: root.fontFamily
                font.weight: Font.Medium
            }

            Rectangle {
                id: live
                anchors.right: parent.right
                anchors.verticalCenter: parent.verticalCenter
                visible: root.transport.live
                width: liveText.implicitWidth + 36 * root.unit
                height: 48 * root.unit
                radius: 8 * root.unit
                color: root.accent

                Label {
                    id: liveText
                    anchors.centerIn: parent
                    text: qsTr("LIVE")
                    color: "#141414"
                    unit: root.unit
                    size: 30
                    font.family: root.fontFamily
                    font.weight: Font.Bold
                }
            }
        }
    }
}
