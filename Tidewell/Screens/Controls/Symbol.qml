import QtQuick
import QtQuick.Window
import Tidewell.Screens

// A drawing of the symbol family in one colour, as sharp as the screen is.
Item {
    id: symbol

    required property string name
    property color tint: Theme.quiet
    property int size: Theme.symbolSize

    implicitWidth: size
    implicitHeight: size
    Accessible.ignored: true

    Image {
        anchors.fill: parent
        source: symbol.name === "" ? "" : "image://symbol/" + symbol.name + "/" + String(symbol.tint).slice(-6)
        sourceSize: Qt.size(symbol.size * Screen.devicePixelRatio, symbol.size * Screen.devicePixelRatio)
        Accessible.ignored: true
    }
}
