import QtQuick
import AVKit 1.0

// What a programme without pictures shows in their place: its artwork and title.
Item {
    id: root

    property QtObject info
    property bool showsTitle: true
    property real unit: 1
    property real maximumWidth: 1000
    property string fontFamily
    readonly property real pictureHeight: info.hasArtwork ? 460 * unit : 0

    width: maximumWidth
    height: pictureHeight + title.height + 40 * unit

    Artwork {
        id: picture
        anchors.horizontalCenter: parent.horizontalCenter
        visible: root.info.hasArtwork
        height: root.pictureHeight
        width: Math.min(height * aspect, root.maximumWidth)
        radius: 16 * root.unit
        image: root.info.artwork
    }

    Label {
        id: title
        anchors.bottom: parent.bottom
        width: parent.width
        visible: root.showsTitle
        horizontalAlignment: Text.AlignHCenter
        text: root.info.title
        unit: root.unit
        size: 48
        font.family: root.fontFamily
        font.weight: Font.DemiBold
    }
}
