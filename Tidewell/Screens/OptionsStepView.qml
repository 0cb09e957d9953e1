import QtQuick
import QtQuick.Layouts
import Tidewell.Screens

// Step 2: what to export, and where to.
ScrollPage {
    id: view

    required property optionsStepContent content
    required property ExportViewModel controller

    Card {
        Layout.fillWidth: true
        padding: Theme.medium

        GridLayout {
            columns: view.width > 720 ? 4 : 2
            columnSpacing: Theme.medium
            rowSpacing: Theme.snug
            Layout.fillWidth: true

            Fact {
                objectName: "deviceFact"
                share: 4
                label: L10n.text("Device")
                detail: view.content.device
            }
            Fact {
                objectName: "backedUpFact"
                share: 5
                label: L10n.text("Backed up")
                detail: view.content.backedUp
            }
            Fact {
                objectName: "chatsFact"
                share: 2
                label: L10n.text("Chats")
                detail: view.content.chats
            }
            Fact {
                objectName: "mediaFact"
                share: 4
                label: L10n.text("Media")
                detail: view.content.media
            }
        }
        Words {
            objectName: "emptyText"
            Layout.fillWidth: true
            visible: view.content.isEmpty
            text: L10n.text("No chats or media for WhatsApp were found in this backup.")
            color: Theme.warning
            wrapMode: Text.Wrap
        }
        WarningList {
            Layout.fillWidth: true
            warnings: view.content.warnings
        }
    }
    Card {
        Layout.fillWidth: true
        padding: Theme.medium
        spacing: 0

        Words {
            Layout.fillWidth: true
            Layout.bottomMargin: Theme.hair
            text: L10n.text("What to export")
            font.pixelSize: Theme.heading
            font.weight: Font.DemiBold
            Accessible.role: Accessible.Heading
        }
        Repeater {
            model: view.content.kinds.length

            CheckRow {
                required property int index
                readonly property mediaKindContent kind: view.content.kinds[index]

                objectName: "kindBox." + kind.rawValue
                Layout.fillWidth: true
                Layout.leftMargin: -Theme.tight
                Layout.rightMargin: -Theme.tight
                sidePadding: Theme.tight
                symbol: "kind." + kind.rawValue
                text: kind.title
                trailing: L10n.joined([kind.count, kind.size], " · ")
                Accessible.name: kind.accessibleName
                checked: kind.included
                onWanted: on => view.controller.setKindIncluded(kind.rawValue, on)
            }
        }
        Rectangle {
            Layout.fillWidth: true
            Layout.topMargin: Theme.hair
            Layout.bottomMargin: Theme.hair
            implicitHeight: 1
            color: Theme.line
        }
        CheckRow {
            objectName: "transcriptsBox"
            Layout.fillWidth: true
            Layout.leftMargin: -Theme.tight
            Layout.rightMargin: -Theme.tight
            sidePadding: Theme.tight
            symbol: "transcript"
            text: L10n.text("Include readable chat transcripts")
            caption: L10n.text("Adds a Chat Archive you can open in a browser, plus a text file in each chat folder.")
            checked: view.content.exportTranscripts
            onWanted: on => view.controller.setExportTranscripts(on)
        }
        CheckRow {
            objectName: "messageFilesBox"
            Layout.fillWidth: true
            Layout.leftMargin: -Theme.tight
            Layout.rightMargin: -Theme.tight
            sidePadding: Theme.tight
            symbol: "kind.documents"
            text: L10n.text("Also save messages as JSON and CSV")
            caption: L10n.text("For spreadsheets and other programs: two more files in each chat folder.")
            enabled: view.content.exportTranscripts
            checked: view.content.exportMessageFiles
            onWanted: on => view.controller.setExportMessageFiles(on)
        }
    }
    ChatChoiceCard {
        Layout.fillWidth: true
        content: view.content.chatChoice
        onChooseChats: view.controller.showChats(true)
        onFirstDayTyped: text => view.controller.setFirstDay(text)
        onLastDayTyped: text => view.controller.setLastDay(text)
    }
    DestinationBar {
        Layout.fillWidth: true
        content: view.content.destination
        onChooseFolder: view.controller.chooseDestination()
    }
}
