import QtQuick
import AVKit 1.0

// Artwork, title and description; what is missing takes no room.
Item {
    id: root

    property QtObject info
    property real unit: 1
    property string fontFamily
    readonly property real gap: 48 * unit

    height: Math.max(picture.height, texts.height)

    Artwork {
        id: picture
        visible: root.info.hasArtwork
        width: visible ? Math.min(root.width * 0.4, 320 * root.unit * aspect) : 0
        height: visible ? width / aspect : 0
        radius: 12 * root.unit
        image: root.info.artwork
    }

    Column {
        id: texts
        x: picture.visible ? picture.width + root.gap : 0
        width: root.width - x
        spacing: 20 * root.unit

        Label {
            width: parent.width
            visible: text !== ""
            text: root.info.title
            unit: root.unit
            size: 48
            wrapMode: Text.Wrap
            maximumLineCount: 2
            font.family: root.fontFamily
            font.weight: Font.DemiBold
        }

        Label {
            width: parent.width
            visible: text !== ""
            text: root.info.description
            color: "#d9ffffff"
            unit: root.unit
            size: 32
            wrapMode: Text.Wrap
            maximumLineCount: 5
            lineHeight: 1.15
            font.family: root.fontFamily
        }
    }
}
