import QtQuick

// The captions menu: one row each, a mark at what is selected.
ListView {
    id: root

    property QtObject menu
    property int row: -1
    property real unit: 1
    property color accent
    property string fontFamily
    readonly property real rowHeight: 76 * unit

    height: rowHeight * Math.min(count, 5)
    model: menu.names
    clip: true
    interactive: false
    currentIndex: Math.max(0, row)
    highlightMoveDuration: 0
    highlightFollowsCurrentItem: true

    delegate: Rectangle {
        id: line
        required property string modelData
        required property int index
        readonly property bool focused: index === root.row
        readonly property color ink: focused ? "#141414" : "white"

        width: root.width
        height: root.rowHeight
        radius: 12 * root.unit
        color: focused ? root.accent : "transparent"

        // A tick.
        Item {
            x: 28 * root.unit
            anchors.verticalCenter: parent.verticalCenter
            width: 36 * root.unit
            height: 36 * root.unit
            visible: line.index === root.menu.selected

            Rectangle {
                x: 3 * root.unit
                y: 19 * root.unit
                width: 15 * root.unit
                height: 5 * root.unit
                radius: height / 2
                rotation: 45
                antialiasing: true
                color: line.ink
            }

            Rectangle {
                x: 9.5 * root.unit
                y: 15.5 * root.unit
                width: 27 * root.unit
                height: 5 * root.unit
                radius: height / 2
                rotation: -45
                antialiasing: true
                color: line.ink
            }
        }

        Label {
            anchors.left: parent.left
            anchors.leftMargin: 92 * root.unit
            anchors.right: parent.right
            anchors.rightMargin: 28 * root.unit
            anchors.verticalCenter: parent.verticalCenter
            text: line.modelData
            color: line.ink
            unit: root.unit
            size: 36
            font.family: root.fontFamily
            font.weight: line.index === root.menu.selected ? Font.DemiBold : Font.Normal
        }
    }
}
