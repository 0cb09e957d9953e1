import QtQuick
import Tidewell.Screens

// Puts a text into the clipboard, and says so for a moment.
PlainButton {
    id: button

    required property string copied
    required property string label

    text: told.running ? L10n.text("Copied") : label
    onClicked: {
        Clipboard.copy(copied);
        told.restart();
    }

    Timer {
        id: told

        interval: 2000
    }
}
