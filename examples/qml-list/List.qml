import QtQuick

// A list of films for a remote: up and down go through it, Enter plays.
Rectangle {
    id: root
    width: 1280
    height: 720
    color: "#10141c"

    ListView {
        anchors.fill: parent
        anchors.margins: root.height * 0.08
        spacing: root.height * 0.02
        focus: true
        enabled: !films.playing
        model: films.names
        Keys.onReturnPressed: films.play(currentIndex)

        header: Text {
            bottomPadding: root.height * 0.04
            text: "Films"
            color: "white"
            font.pixelSize: root.height * 0.07
            font.bold: true
        }

        delegate: Rectangle {
            required property int index
            required property string modelData
            width: ListView.view.width
            height: root.height * 0.12
            radius: height / 5
            color: ListView.isCurrentItem ? "#ffb81c" : "#20ffffff"

            Text {
                anchors.fill: parent
                anchors.leftMargin: parent.height * 0.35
                anchors.rightMargin: anchors.leftMargin
                verticalAlignment: Text.AlignVCenter
                elide: Text.ElideRight
                text: modelData
                color: parent.ListView.isCurrentItem ? "#141414" : "white"
                font.pixelSize: parent.height * 0.4
            }

            TapHandler {
                onTapped: films.play(index)
            }
        }
    }

    // What went wrong with the last film.
    Text {
        anchors.bottom: parent.bottom
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.margins: root.height * 0.05
        text: films.failure
        color: "#ffb81c"
        font.pixelSize: root.height * 0.035
        wrapMode: Text.Wrap
    }
}
