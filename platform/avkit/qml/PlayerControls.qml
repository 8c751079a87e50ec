import QtQuick
import AVKit 1.0
import UIKit 1.0

// Everything over the picture. Sizes are in units of a 1080th of the height; nothing comes nearer to an edge than 5 %.
ControlsView {
    id: root

    readonly property real unit: Math.min(height / 1080, width / 1600)
    readonly property real marginX: width * 0.05
    readonly property real marginY: height * 0.05
    readonly property color accent: "#ffb81c"

    obscuredHeight: caption.visible ? height - caption.y
                                    : transport.shown ? marginY + bar.contentHeight + 36 * unit : 0

    SoundStage {
        anchors.centerIn: parent
        anchors.verticalCenterOffset: -70 * root.unit
        visible: root.stage.soundOnly && !root.panel.open
        showsTitle: !root.transport.shown
        info: root.info
        unit: root.unit
        maximumWidth: root.width - 2 * root.marginX
        fontFamily: root.fontFamily
    }

    UIActivityIndicatorView {
        anchors.centerIn: parent
        width: 176 * root.unit
        height: width
        animating: root.stage.spinning
    }

    // What makes the bar readable on a bright picture; under the overlay, whose subtitles it leaves alone.
    Fading {
        parent: root.ground
        width: root.width
        height: root.height
        shown: root.transport.shown

        Scrim {
            anchors.left: parent.left
            anchors.right: parent.right
            anchors.bottom: parent.bottom
            height: root.marginY + bar.contentHeight + 240 * root.unit
            color: "#d9000000"
        }
    }

    Fading {
        anchors.fill: parent
        shown: root.transport.shown

        TransportBar {
            id: bar
            anchors.fill: parent
            transport: root.transport
            title: root.info.title
            hint: root.panel.titles.join("  ·  ")
            unit: root.unit
            marginX: root.marginX
            marginY: root.marginY
            accent: root.accent
            fontFamily: root.fontFamily
        }
    }

    Caption {
        id: caption
        anchors.horizontalCenter: parent.horizontalCenter
        anchors.bottom: parent.bottom
        anchors.bottomMargin: root.transport.shown ? root.marginY + bar.contentHeight + 36 * root.unit : root.marginY
        text: root.stage.caption
        unit: root.unit
        maximumWidth: root.width * 0.8
        fontFamily: root.fontFamily
    }

    Fading {
        anchors.fill: parent
        shown: root.panel.open

        Panel {
            x: root.marginX
            y: root.marginY
            width: root.width - 2 * root.marginX
            panel: root.panel
            info: root.info
            menu: root.captionsMenu
            unit: root.unit
            accent: root.accent
            fontFamily: root.fontFamily
        }
    }
}
