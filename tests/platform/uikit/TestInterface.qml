import QtQuick
import UIKit 1.0

UIView {
    id: root
    property bool turning: false
    backgroundColor: "#202040"

    UIView {
        anchors { left: parent.left; right: parent.right; top: parent.top }
        height: 100
    }
    NumberAnimation on rotation { running: root.turning; from: 0; to: 90; duration: 1000 }
}
