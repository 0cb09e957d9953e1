import QtQuick
import QtQuick.Layouts
import Tidewell.Screens

// Where the export goes, and whether it fits there.
Card {
    id: bar

    required property destinationContent content
    signal chooseFolder()

    padding: Theme.medium
    spacing: Theme.snug

    Words {
        Layout.fillWidth: true
        text: L10n.text("Where to save")
        font.pixelSize: Theme.heading
        font.weight: Font.DemiBold
        Accessible.role: Accessible.Heading
    }
    RowLayout {
        spacing: Theme.snug
        Layout.fillWidth: true

        Symbol {
            name: "folder"
            tint: bar.content.isChosen ? Theme.accent : Theme.quiet
            size: 26
        }
        ColumnLayout {
            spacing: 2
            Layout.fillWidth: true

            Words {
                text: L10n.text("Save to")
                color: Theme.quiet
                font.pixelSize: Theme.caption
            }
            Words {
                objectName: "destinationPath"
                Layout.fillWidth: true
                text: bar.content.isChosen ? bar.content.path : L10n.text("Choose a folder on this Mac, such as Documents or Desktop.")
                font.weight: bar.content.isChosen ? Font.Medium : Font.Normal
                wrapMode: bar.content.isChosen ? Text.NoWrap : Text.Wrap
                elide: bar.content.isChosen ? Text.ElideMiddle : Text.ElideNone
                maximumLineCount: bar.content.isChosen ? 1 : 3
            }
        }
        PlainButton {
            objectName: "chooseDestinationButton"
            text: L10n.text("Choose folder…")
            onClicked: bar.chooseFolder()
        }
    }
    Rectangle {
        Layout.fillWidth: true
        implicitHeight: 1
        color: Theme.line
    }
    RowLayout {
        spacing: Theme.medium
        Layout.fillWidth: true

        Fact {
            objectName: "willCopyFact"
            label: L10n.text("Will copy")
            detail: bar.content.willCopy
        }
        Fact {
            objectName: "freeSpaceFact"
            label: L10n.text("Free space")
            detail: bar.content.freeSpace
            opacity: bar.content.freeSpace === "" ? 0 : 1
            Accessible.ignored: bar.content.freeSpace === ""
        }
        RowLayout {
            spacing: 6
            Layout.fillWidth: true
            Layout.preferredWidth: 200
            opacity: bar.content.status === "" ? 0 : 1

            Item {
                Layout.fillWidth: true
            }
            Symbol {
                name: bar.content.isEnough ? "checkmark.circle.fill" : "exclamationmark.triangle"
                tint: bar.content.isEnough ? Theme.accent : Theme.warning
                size: 20
            }
            Words {
                objectName: "spaceStatus"
                text: bar.content.status
                color: bar.content.isEnough ? Theme.accent : Theme.warning
                font.weight: Font.Medium
                wrapMode: Text.Wrap
            }
        }
    }
}
