import QtQuick
import QtQuick.Templates as T
import Tidewell.Screens

// A button that shows a symbol; its text is for screen readers and the pointer that rests on it.
T.Button {
    id: button

    required property string symbol

    implicitWidth: Theme.controlHeight
    implicitHeight: Theme.controlHeight
    hoverEnabled: true
    focusPolicy: Qt.TabFocus
    opacity: enabled ? 1 : 0.45
    Accessible.name: text
    Accessible.onPressAction: clicked()
    Keys.onReturnPressed: event => event.isAutoRepeat || clicked()
    Keys.onEnterPressed: event => event.isAutoRepeat || clicked()

    background: Rectangle {
        radius: Theme.controlRadius
        color: button.down ? Theme.pressed : button.hovered ? Theme.hover : "transparent"

        FocusRing {
            shown: button.visualFocus
            anchors.margins: -1
        }
    }
    contentItem: Item {
        Symbol {
            anchors.centerIn: parent
            name: button.symbol
            tint: button.down || button.hovered ? Theme.text : Theme.quiet
            size: 20
        }
    }
}
