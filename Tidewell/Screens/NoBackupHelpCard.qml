import QtQuick
import QtQuick.Layouts
import Tidewell.Screens

// Explains how to make a backup, when there is none.
Card {
    id: card

    signal refresh()

    CardHeading {
        symbol: "questionmark.folder"
        title: L10n.text("No backup yet?")
        explanation: L10n.text("Make a local backup in Finder, then come back and refresh this list.")
    }
    NumberedList {
        Layout.fillWidth: true
        Layout.leftMargin: 44 + Theme.medium
        texts: [
            L10n.text("Connect the iPhone with a cable and unlock it."),
            L10n.text("If asked, tap Trust and enter the passcode."),
            L10n.text("In Finder, select the iPhone in the sidebar."),
            L10n.text("Choose “Back up all of the data on your iPhone to this Mac”."),
            L10n.text("You can leave “Encrypt local backup” on. This app will ask for that backup password."),
            L10n.text("Click Back Up Now and wait until it finishes."),
        ]
    }
    Words {
        objectName: "otherSystemsHelp"
        Layout.fillWidth: true
        Layout.leftMargin: 44 + Theme.medium
        visible: Qt.platform.os !== "osx"
        text: L10n.text("On this computer, make a backup with “idevicebackup2 backup --full FOLDER”, or copy the backup's folder from a Mac or PC, and choose it with “Choose other folder…”.")
        color: Theme.quiet
        wrapMode: Text.Wrap
    }
    PlainButton {
        objectName: "refreshButton"
        Layout.leftMargin: 44 + Theme.medium
        text: L10n.text("Refresh")
        onClicked: card.refresh()
    }
}
