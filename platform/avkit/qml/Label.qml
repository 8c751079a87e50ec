import QtQuick

// Text of the interface. What it says may come from anywhere: it is not read as markup.
Text {
    property real unit: 1
    property real size: 32

    color: "white"
    textFormat: Text.PlainText
    elide: Text.ElideRight
    maximumLineCount: 1
    font.pixelSize: Math.max(1, Math.round(size * unit))
}
