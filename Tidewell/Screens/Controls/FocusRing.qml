import QtQuick
import Tidewell.Screens

// Drawn around what has the keyboard's focus.
Rectangle {
    required property bool shown
    property int around: Theme.controlRadius

    anchors.fill: parent
    anchors.margins: -2 - Theme.focusWidth
    visible: shown
    color: "transparent"
    radius: around + 2 + Theme.focusWidth
    border.width: Theme.focusWidth
    border.color: Theme.accent
}
