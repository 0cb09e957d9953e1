import QtQuick
import QtQuick.Window
import Tidewell.Screens

// A drawing of the symbol family in one colour.
Image {
    id: symbol

    required property string name
    property color tint: Theme.quiet
    property int size: Theme.symbolSize

    width: size
    height: size
    source: name === "" ? "" : "image://symbol/" + name + "/" + String(tint).slice(-6)
    sourceSize: Qt.size(size * Screen.devicePixelRatio, size * Screen.devicePixelRatio)
    Accessible.ignored: true
}
