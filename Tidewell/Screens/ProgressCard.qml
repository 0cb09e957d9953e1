import QtQuick
import QtQuick.Layouts
import Tidewell.Screens

// How far a run has come. What is put into it stands below.
Card {
    id: card

    required property progressStepContent content

    padding: 32
    spacing: Theme.snug

    RowLayout {
        spacing: Theme.medium
        Layout.fillWidth: true

        Words {
            objectName: "progressTitle"
            Layout.fillWidth: true
            text: card.content.title
            font.pixelSize: Theme.title
            font.weight: Font.DemiBold
            elide: Text.ElideRight
            Accessible.role: Accessible.Heading
        }
        Words {
            objectName: "remaining"
            text: card.content.remaining
            color: Theme.quiet
        }
    }
    ProgressStripe {
        objectName: "progressBar"
        Layout.fillWidth: true
        Layout.topMargin: Theme.hair
        indeterminate: card.content.isIndeterminate
        value: card.content.fraction
        caption: card.content.title
        count: card.content.count
    }
    RowLayout {
        spacing: Theme.wide
        Layout.fillWidth: true

        Words {
            objectName: "currentFile"
            Layout.fillWidth: true
            text: card.content.fileName === "" ? " " : card.content.fileName
            color: Theme.quiet
            maximumLineCount: 1
            elide: Text.ElideMiddle
        }
        Words {
            objectName: "progressCount"
            text: card.content.count
            color: Theme.quiet
        }
    }
}
