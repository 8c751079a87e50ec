import QtQuick
import UIKit 1.0
import YMRAds 1.0

// Sizes are in units of a 1080th of the height; nothing to be read comes nearer to an edge than 5 %.
YMRAdContainerView {
    id: root

    readonly property real unit: Math.min(height / 1080, width / 1600)
    readonly property bool waiting: wheel !== null && wheel.animating

    backgroundColor: "black"
    adPlayerView: picture
    lastPictureView: last
    loadingIndicator: wheel
    timeRemainLabel: label
    skipButton: skip

    UIView {
        id: picture
        anchors.fill: parent
    }

    UIView {
        id: last
        anchors.fill: parent
    }

    UIActivityIndicatorView {
        id: wheel
        anchors.centerIn: parent
        opacity: root.isPatient ? 0 : 1
        width: 176 * root.unit
        height: width
    }

    // Calms a restless picture behind the countdown.
    Rectangle {
        id: plate

        readonly property real paddingX: Math.round(24 * root.unit)
        readonly property real paddingY: Math.round(10 * root.unit)

        visible: label.width > 0 && !root.waiting
        x: label.x - paddingX
        y: label.y - paddingY
        width: Math.ceil(label.width * label.scale) + 2 * paddingX
        height: Math.ceil(label.height * label.scale) + 2 * paddingY
        radius: 8 * root.unit
        color: "#a6000000"
    }

    // Below the wheel while that turns; then in the upper right corner, where an ad's own small print is not. In whole
    // points, so that the letters stay as sharp as they are drawn.
    YMROutlinedLabel {
        id: label

        readonly property real edge: root.waiting ? (root.width + width * scale) / 2
                                                  : root.width * 0.95 - plate.paddingX

        opacity: root.waiting && root.isPatient ? 0 : 1
        width: contentSize.width
        height: contentSize.height
        preferredMaxLayoutWidth: 1440
        transformOrigin: Item.TopLeft
        scale: root.unit
        x: Math.round(edge - width * scale)
        y: Math.round(root.waiting ? wheel.y + wheel.height + 40 * root.unit
                                   : root.height * 0.05 + plate.paddingY)
    }

    YMRSkipButton {
        id: skip

        width: contentSize.width
        height: contentSize.height
        transformOrigin: Item.TopLeft
        scale: root.unit
        x: Math.round(root.width * 0.95 - width * scale)
        y: Math.round(root.height * 0.95 - height * scale)
    }
}
