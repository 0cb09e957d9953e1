import QtQuick
import QtQuick.Templates as T
import Tidewell.Screens

// A field for one line of text.
T.TextField {
    id: field

    implicitHeight: Theme.controlHeight
    leftPadding: Theme.snug
    rightPadding: Theme.snug
    color: Theme.text
    selectionColor: Theme.accent
    selectedTextColor: Theme.accentInk
    selectByMouse: true
    font.pixelSize: Theme.body
    verticalAlignment: TextInput.AlignVCenter
    horizontalAlignment: TextInput.AlignLeft
    inputMethodHints: Qt.ImhNoPredictiveText | Qt.ImhNoAutoUppercase

    placeholderTextColor: Theme.quiet

    background: Rectangle {
        radius: Theme.controlRadius
        color: Theme.surface
        border.width: field.activeFocus ? Theme.focusWidth : 1
        border.color: field.activeFocus ? Theme.accent : Theme.border
    }

    Text {
        anchors.fill: parent
        leftPadding: field.leftPadding
        rightPadding: field.rightPadding
        text: field.placeholderText
        textFormat: Text.PlainText
        color: field.placeholderTextColor
        font: field.font
        elide: Text.ElideRight
        verticalAlignment: Text.AlignVCenter
        visible: field.length === 0 && field.preeditText === ""
        Accessible.ignored: true
    }
}
