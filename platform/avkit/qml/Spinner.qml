import QtQuick

// Dots in a ring; the brightest goes round with `step`.
Item {
    id: root

    property int step: 0
    property int steps: 12
    property real unit: 1

    width: 176 * unit
    height: width

    // Keeps the dots visible over a bright picture.
    Rectangle {
        anchors.fill: parent
        radius: width / 2
        color: "#8c000000"
    }

    Repeater {
        model: root.steps

        Rectangle {
            required property int index
            readonly property real angle: 2 * Math.PI * index / root.steps
            // 0 for the brightest dot, growing along its tail.
            readonly property int age: (root.step - index + root.steps) % root.steps

            width: 14 * root.unit
            height: width
            radius: width / 2
            x: root.width / 2 + Math.sin(angle) * 56 * root.unit - width / 2
            y: root.height / 2 - Math.cos(angle) * 56 * root.unit - height / 2
            opacity: Math.max(0.14, 1 - age / 9)
        }
    }
}
