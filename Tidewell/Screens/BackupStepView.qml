import QtQuick
import QtQuick.Layouts
import Tidewell.Screens

// Step 1: which backup.
ScrollPage {
    id: view

    required property backupStepContent content
    required property ExportViewModel controller
    // False while something lies over the window that keeps the focus.
    required property bool mayTakeFocus

    centred: content.isLooking
    revealed: content.isEncrypted ? passwordCard : null

    ColumnLayout {
        visible: view.content.isLooking
        spacing: Theme.medium
        Layout.alignment: Qt.AlignHCenter

        Spinner {
            size: 32
            Layout.alignment: Qt.AlignHCenter
        }
        Words {
            objectName: "lookingText"
            text: L10n.text("Looking for iPhone backups…")
            color: Theme.quiet
        }
    }
    FullDiskAccessCard {
        Layout.fillWidth: true
        visible: view.content.isAccessDenied
        compact: view.content.rows.length > 0
        onOpenSettings: view.controller.openFullDiskAccessSettings()
        onCheckAgain: view.controller.refreshLibrary()
    }
    Words {
        objectName: "listText"
        Layout.fillWidth: true
        visible: view.content.listsBackups
        text: L10n.text("These Finder backups are on this Mac. Choose one to export.")
        color: Theme.quiet
        wrapMode: Text.Wrap
    }
    ColumnLayout {
        id: list

        objectName: "backupList"
        Layout.fillWidth: true
        visible: view.content.rows.length > 0
        spacing: Theme.tight
        Accessible.role: Accessible.List
        Accessible.name: L10n.text("These Finder backups are on this Mac. Choose one to export.")

        function focusRow(index) {
            const row = rows.itemAt(index);
            if (row)
                row.forceActiveFocus(Qt.TabFocusReason);
        }

        Repeater {
            id: rows

            model: view.content.rows.length

            BackupRow {
                required property int index

                objectName: "backupRow" + index
                Layout.fillWidth: true
                backup: view.content.rows[index]
                selected: backup.selected
                onClicked: view.controller.selectBackup(backup.id)
                Keys.onUpPressed: list.focusRow(index - 1)
                Keys.onDownPressed: list.focusRow(index + 1)
            }
        }
    }
    NoBackupHelpCard {
        Layout.fillWidth: true
        visible: view.content.showsHelp
        onRefresh: view.controller.refreshLibrary()
    }
    EncryptedBackupCard {
        id: passwordCard

        Layout.fillWidth: true
        visible: view.content.isEncrypted
        content: view.content
        takesFocus: view.content.wantsPasswordFocus && view.mayTakeFocus
        controller: view.controller
    }
}
