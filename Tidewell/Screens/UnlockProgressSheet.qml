import QtQuick
import QtQuick.Layouts
import Tidewell.Screens

// Shown while an encrypted backup is being unlocked.
ModalPanel {
    id: sheet

    required property bool isStopping
    signal cancel()

    objectName: "unlockSheet"
    title: L10n.text("Unlocking backup")
    description: L10n.text("This can take up to a minute. The password stays on this Mac.")
    onEscaped: cancel()

    Words {
        Layout.fillWidth: true
        text: sheet.title
        font.pixelSize: Theme.heading
        font.weight: Font.DemiBold
        wrapMode: Text.Wrap
    }
    Words {
        Layout.fillWidth: true
        text: sheet.description
        color: Theme.quiet
        wrapMode: Text.Wrap
    }
    ProgressStripe {
        Layout.fillWidth: true
        Layout.topMargin: Theme.hair
        indeterminate: true
        isAboveShade: true
        caption: sheet.title
    }
    PlainButton {
        objectName: "cancelUnlockButton"
        Layout.alignment: Qt.AlignRight
        Layout.topMargin: Theme.tight
        focus: true
        text: sheet.isStopping ? L10n.text("Stopping…") : L10n.text("Cancel")
        onClicked: sheet.cancel()
    }
}
