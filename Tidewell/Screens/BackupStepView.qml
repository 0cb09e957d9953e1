import QtQuick
import QtQuick.Layouts
import QtQuick.Window
import Tidewell.Screens

// Step 1: which backup.
FocusScope {
    id: view

    required property backupStepContent content
    required property BackupRows backups
    required property ExportViewModel controller
    // False while something lies over the window that keeps the focus.
    required property bool mayTakeFocus
    readonly property Item focusItem: Window.activeFocusItem

    onFocusItemChanged: if (scroller.isReachedByKeys(focusItem)) scroller.reveal(focusItem)
    Keys.onUpPressed: scroller.by(-48)
    Keys.onDownPressed: scroller.by(48)
    Keys.onPressed: event => scroller.takePageKey(event)

    Shortcut {
        sequences: [StandardKey.Refresh]
        autoRepeat: false
        enabled: view.mayTakeFocus && Beat.shades === 0
        onActivated: view.controller.refreshLibrary()
    }
    Scroller {
        id: scroller

        flickable: list
        margin: Theme.tight
    }
    ColumnLayout {
        anchors.centerIn: parent
        visible: view.content.isLooking && !view.content.isAccessDenied
        spacing: Theme.medium

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
    BackupList {
        id: list

        objectName: "backupList"
        anchors.fill: parent
        content: view.content
        backups: view.backups
        controller: view.controller
        mayTakeFocus: view.mayTakeFocus

        footer: UnreadableFolders {
            x: list.columnX
            width: list.columnWidth
            content: view.content
        }
        header: Item {
            width: list.width
            height: heading.visible ? heading.y + heading.height + Theme.medium : Theme.wide

            ColumnLayout {
                id: heading

                x: list.columnX
                y: Theme.wide
                width: list.columnWidth
                visible: view.content.isAccessDenied || view.content.listsBackups || view.content.showsHelp
                spacing: Theme.medium

                FullDiskAccessCard {
                    Layout.fillWidth: true
                    visible: view.content.isAccessDenied
                    compact: list.count > 0
                    hasSettings: view.controller.hasFullDiskAccessSettings()
                    onOpenSettings: view.controller.openFullDiskAccessSettings()
                    onCheckAgain: view.controller.refreshLibrary()
                }
                RowLayout {
                    Layout.fillWidth: true
                    visible: view.content.listsBackups
                    spacing: Theme.tight

                    Words {
                        objectName: "listText"
                        Layout.fillWidth: true
                        text: L10n.text("These Finder backups are on this Mac. Choose one to export.")
                        color: Theme.quiet
                        wrapMode: Text.Wrap
                    }
                    SymbolButton {
                        objectName: "refreshListButton"
                        symbol: "arrow.clockwise"
                        text: L10n.text("Refresh")
                        onClicked: view.controller.refreshLibrary()
                    }
                }
                NoBackupHelpCard {
                    Layout.fillWidth: true
                    visible: view.content.showsHelp
                    onRefresh: view.controller.refreshLibrary()
                }
            }
        }
    }
}
