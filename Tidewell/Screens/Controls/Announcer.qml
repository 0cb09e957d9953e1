import QtQuick

// Says a text to screen readers, and nothing to the eye: a notice that comes up with every
// new text.
Item {
    id: announcer

    required property string text

    function say() {
        visible = false;
        Accessible.name = text;
        visible = text !== "";
    }

    width: 1
    height: 1
    visible: false
    onTextChanged: say()
    Accessible.role: Accessible.Notification
    Accessible.name: ""
}
