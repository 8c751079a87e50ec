import QtQuick

// The card that comes down over the picture: titles of its pages, and the open page.
Rectangle {
    id: root

    property QtObject panel
    property QtObject info
    property QtObject menu
    property real unit: 1
    property color accent
    property string fontFamily

    height: titles.height + 3 * padding + (panel.showsInfo ? infoPage.height : subtitlesPage.height)
    radius: 24 * unit
    color: "#f0141619"
    readonly property real padding: 40 * unit

    Row {
        id: titles
        x: root.padding
        y: root.padding
        spacing: 16 * root.unit

        Repeater {
            model: root.panel.titles

            Rectangle {
                id: tab
                required property string modelData
                required property int index
                readonly property bool current: index === root.panel.page
                readonly property bool focused: current && root.panel.row < 0

                width: name.implicitWidth + 64 * root.unit
                height: 68 * root.unit
                radius: height / 2
                color: focused ? root.accent : current ? "#33ffffff" : "transparent"

                Label {
                    id: name
                    anchors.centerIn: parent
                    text: tab.modelData
                    color: tab.focused ? "#141414" : "white"
                    opacity: tab.current ? 1 : 0.7
                    unit: root.unit
                    size: 36
                    font.family: root.fontFamily
                    font.weight: Font.DemiBold
                }
            }
        }
    }

    InfoPage {
        id: infoPage
        x: root.padding
        y: titles.y + titles.height + root.padding
        width: root.width - 2 * root.padding
        visible: root.panel.showsInfo
        info: root.info
        unit: root.unit
        fontFamily: root.fontFamily
    }

    SubtitlesPage {
        id: subtitlesPage
        x: root.padding
        y: titles.y + titles.height + root.padding
        width: root.width - 2 * root.padding
        visible: !root.panel.showsInfo
        menu: root.menu
        row: root.panel.row
        unit: root.unit
        accent: root.accent
        fontFamily: root.fontFamily
    }
}
