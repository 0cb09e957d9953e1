import QtQuick
import QtQuick.Layouts
import Tidewell.Screens

// Explains how to let this application see the backups.
Card {
    id: card

    required property bool compact
    // The steps lead through settings that only some systems have.
    required property bool hasSettings
    signal openSettings()
    signal checkAgain()

    padding: compact ? Theme.medium : Theme.wide
    spacing: compact ? Theme.snug : Theme.medium

    CardHeading {
        symbol: "lock.shield"
        title: L10n.text("macOS is hiding your backups")
        explanation: L10n.text("Finder keeps iPhone backups in a protected folder. Grant Full Disk Access so this app can list them. Your backup is only read, never changed.")
    }
    ColumnLayout {
        Layout.fillWidth: true
        visible: card.hasSettings
        Layout.leftMargin: card.compact ? 0 : 44 + Theme.medium
        spacing: card.compact ? 2 : Theme.tight

        Repeater {
            model: [
                L10n.text("1. Click Open System Settings."),
                L10n.text("2. Select Privacy & Security, then Full Disk Access."),
                L10n.format("3. Turn on %@ in the list (add it with + if needed).", [Qt.application.displayName]),
                L10n.text("4. Come back here and click Check again."),
            ]

            Words {
                required property string modelData

                Layout.fillWidth: true
                text: modelData
                color: card.compact ? Theme.quiet : Theme.text
                font.pixelSize: card.compact ? Theme.caption : Theme.body
                wrapMode: Text.Wrap
            }
        }
    }
    RowLayout {
        Layout.leftMargin: card.compact ? 0 : 44 + Theme.medium
        spacing: Theme.snug

        PlainButton {
            objectName: "openSettingsButton"
            visible: card.hasSettings
            text: L10n.text("Open System Settings")
            onClicked: card.openSettings()
        }
        PlainButton {
            objectName: "checkAgainButton"
            text: L10n.text("Check again")
            onClicked: card.checkAgain()
        }
    }
}
