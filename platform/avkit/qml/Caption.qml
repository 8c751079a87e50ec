import QtQuick

// The caption that is due: on a dark box as wide as the text, white where it has no colour of its own.
Rectangle {
    id: root

    property alias text: label.text
    property real unit: 1
    property real maximumWidth: 1000
    property string fontFamily

    visible: text !== ""
    width: label.contentWidth + 48 * unit
    height: label.contentHeight + 24 * unit
    radius: 8 * unit
    color: "#c8000000"

    Label {
        id: label
        anchors.centerIn: parent
        width: root.maximumWidth
        unit: root.unit
        size: 50
        textFormat: Text.StyledText  // the model's, in which nothing of the media is markup any more
        font.family: root.fontFamily
        font.weight: Font.Medium
        horizontalAlignment: Text.AlignHCenter
        wrapMode: Text.Wrap
        maximumLineCount: 5
        lineHeight: 1.08
    }
}
