import QtQuick
import QtQuick.Templates as T
import Tidewell.Screens

// A text that does something when it is clicked.
T.Button {
    id: link

    function pressByKey(event) {
        if (!event.isAutoRepeat)
            clicked();
    }

    implicitWidth: implicitContentWidth
    implicitHeight: Math.max(24, implicitContentHeight)
    hoverEnabled: true
    focusPolicy: Qt.StrongFocus
    Accessible.name: text
    Accessible.onPressAction: clicked()
    Keys.onReturnPressed: event => pressByKey(event)
    Keys.onEnterPressed: event => pressByKey(event)

    HoverHandler {
        cursorShape: Qt.PointingHandCursor
    }

    background: Item {
        FocusRing {
            shown: link.visualFocus
            around: 2
        }
    }
    contentItem: Text {
        text: link.text
        textFormat: Text.PlainText
        color: link.hovered ? Theme.accentHover : Theme.accent
        font.pixelSize: Theme.body
        font.weight: Font.Medium
        font.underline: true
        elide: Text.ElideRight
        horizontalAlignment: Text.AlignLeft
        verticalAlignment: Text.AlignVCenter
    }
}
