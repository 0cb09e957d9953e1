import QtQuick
import QtQuick.Templates as T
import Tidewell.Screens

// A text field whose text nobody can read off the screen. Qt also tells screen
// readers what a field's "text" is; this one's holds dots, and is no way to the secret.
T.TextField {
    id: field

    readonly property string text: displayText
    signal secretEdited(string secret)

    onTextEdited: secretEdited(getText(0, length))
    implicitHeight: Theme.controlHeight + 2
    leftPadding: Theme.snug
    rightPadding: Theme.snug
    echoMode: TextInput.Password
    inputMethodHints: Qt.ImhSensitiveData | Qt.ImhNoPredictiveText | Qt.ImhNoAutoUppercase | Qt.ImhHiddenText
    color: Theme.text
    placeholderTextColor: Theme.quiet
    selectionColor: Theme.accent
    selectedTextColor: Theme.accentInk
    selectByMouse: true
    font.pixelSize: Theme.body
    verticalAlignment: TextInput.AlignVCenter

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
    }
}
