import QtQuick
import QtQuick.Layouts
import Tidewell.Screens

// Asks for the password of the chosen backup.
Card {
    id: card

    required property string name
    required property backupStepContent content
    required property ExportViewModel controller
    // Turns true when the field is to take the focus.
    required property bool takesFocus
    readonly property bool isCleared: !content.hasTypedPassword

    // What is being typed stays.
    function focusField() {
        if (field.activeFocus)
            return;
        field.forceActiveFocus(Qt.OtherFocusReason);
        field.selectAll();
    }

    // Later, since it ends the very wish that it answers.
    function takeFocus() {
        if (!takesFocus)
            return;
        focusField();
        controller.setFocusBackupPassword(false);
    }

    onIsClearedChanged: if (isCleared) field.clear()
    onTakesFocusChanged: Qt.callLater(takeFocus)
    Component.onCompleted: Qt.callLater(takeFocus)

    CardHeading {
        symbol: "lock.fill"
        title: L10n.text("This backup is encrypted")
        subject: card.name
        explanation: L10n.text("Enter the password you set in Finder when you turned on Encrypt local backup. It is not your iPhone passcode.")
    }
    ColumnLayout {
        Layout.fillWidth: true
        Layout.leftMargin: 44 + Theme.medium
        spacing: Theme.tight

        SecretField {
            id: field

            objectName: "passwordField"
            Layout.fillWidth: true
            // Dots stand for a password that was typed before the step was left.
            placeholderText: card.content.hasTypedPassword ? "••••••••" : L10n.text("Backup password")
            secretName: L10n.text("Backup password")
            onSecretEdited: secret => card.controller.setBackupPassword(secret)
        }
        Words {
            objectName: "capsLockNote"
            Layout.fillWidth: true
            visible: field.capsLock && field.activeFocus
            text: L10n.text("Caps Lock is on.")
            color: Theme.warning
            wrapMode: Text.Wrap
        }
        CheckRow {
            objectName: "rememberBox"
            Layout.fillWidth: true
            enabled: card.content.canRemember
            text: L10n.text("Remember this password in Keychain")
            checked: card.content.rememberPassword
            onWanted: on => card.controller.setRememberBackupPassword(on)
        }
        Words {
            objectName: "noStoreNote"
            Layout.fillWidth: true
            visible: !card.content.canRemember
            text: L10n.text("This computer has no store for passwords, so it will be asked for again.")
            color: Theme.quiet
            wrapMode: Text.Wrap
        }
        Words {
            objectName: "storedPasswordNote"
            Layout.fillWidth: true
            visible: card.content.hasStoredPassword
            text: L10n.text("A saved password is ready. Continue to unlock, or type a different one.")
            color: Theme.accent
            wrapMode: Text.Wrap
        }
    }
}
