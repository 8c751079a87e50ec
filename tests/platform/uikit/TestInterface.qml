import QtQuick
import UIKit 1.0

UIView {
    backgroundColor: "#202040"

    UIView {
        anchors { left: parent.left; right: parent.right; top: parent.top }
        height: 100
    }
}
