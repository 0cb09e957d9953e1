import QtQuick
import QtQuick.Templates as T
import Tidewell.Screens

// A text field whose text nobody can read off the screen, nor assistive technology
// (SecretAccess). Its "text" holds dots, and is no way to the secret.
T.TextField {
    id: field

    // What assistive technology calls it.
    required property string secretName
    readonly property string text: eye.down ? "" : displayText
    // As far as what is typed tells: Qt knows nothing of the key.
    property bool capsLock: false
    signal secretEdited(string secret)

    function watchCapsLock(event) {
        if (event.key === Qt.Key_CapsLock)
            capsLock = !capsLock;
        const letter = event.text;
        if (letter.length === 1 && letter.toLowerCase() !== letter.toUpperCase())
            capsLock = (letter === letter.toUpperCase()) !== Boolean(event.modifiers & Qt.ShiftModifier);
        event.accepted = false;
    }

    Accessible.role: Accessible.EditableText
    Keys.onPressed: event => watchCapsLock(event)
    onTextEdited: secretEdited(getText(0, length))
    implicitHeight: Theme.controlHeight + 2
    leftPadding: LayoutMirroring.enabled ? Theme.controlHeight : Theme.snug
    rightPadding: LayoutMirroring.enabled ? Theme.snug : Theme.controlHeight
    echoMode: eye.down ? TextInput.Normal : TextInput.Password
    inputMethodHints: Qt.ImhSensitiveData | Qt.ImhNoPredictiveText | Qt.ImhNoAutoUppercase | Qt.ImhHiddenText
    color: Theme.text
    placeholderTextColor: Theme.quiet
    selectionColor: Theme.accent
    selectedTextColor: Theme.accentInk
    selectByMouse: true
    font.pixelSize: Theme.body
    horizontalAlignment: TextInput.AlignLeft
    verticalAlignment: TextInput.AlignVCenter

    background: Rectangle {
        radius: Theme.controlRadius
        color: Theme.surface
        border.width: field.activeFocus ? Theme.focusWidth : 1
        border.color: field.activeFocus ? Theme.accent : Theme.border
    }

    SymbolButton {
        id: eye

        objectName: field.objectName + ".eye"
        anchors.right: parent.right
        anchors.verticalCenter: parent.verticalCenter
        visible: field.length > 0
        symbol: "eye"
        text: L10n.text("Show the password while pressed")
    }
    Text {
        anchors.fill: parent
        leftPadding: field.leftPadding
        rightPadding: field.rightPadding
        text: field.placeholderText
        textFormat: Text.PlainText
        color: field.placeholderTextColor
        font: field.font
        horizontalAlignment: Text.AlignLeft
        elide: Text.ElideRight
        verticalAlignment: Text.AlignVCenter
        visible: field.length === 0 && field.preeditText === ""
    }
}
