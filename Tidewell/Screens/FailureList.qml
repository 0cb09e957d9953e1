import QtQuick
import QtQuick.Layouts
import Tidewell.Screens

// The files that are not in the export, each with its chat and the reason.
ListCard {
    id: card

    required property doneStepContent content
    signal tryAgain()

    title: L10n.text("What could not be copied")
    copied: content.failureList
    count: content.failures.length
    more: content.moreFailures
    listName: "failureList"
    copyName: "copyFailuresButton"
    moreName: "moreFailures"
    row: ColumnLayout {
        id: row

        required property int index
        readonly property failureContent failure: card.content.failures[index]

        width: ListView.view.width - 2 * Theme.snug
        spacing: 0
        Accessible.role: Accessible.ListItem
        Accessible.name: [failure.name, failure.chat, failure.reason].join(", ")

        Text {
            Layout.fillWidth: true
            Layout.topMargin: 4
            text: row.failure.name
            textFormat: Text.PlainText
            color: Theme.text
            font.pixelSize: Theme.body
            horizontalAlignment: Text.AlignLeft
            elide: Text.ElideMiddle
        }
        RowLayout {
            spacing: 0
            Layout.fillWidth: true
            Layout.bottomMargin: 4

            Text {
                Layout.fillWidth: true
                Layout.maximumWidth: Math.ceil(implicitWidth)
                text: row.failure.chat
                textFormat: Text.PlainText
                color: Theme.quiet
                font.pixelSize: Theme.caption
                horizontalAlignment: Text.AlignLeft
                elide: Text.ElideRight
            }
            Text {
                text: " · " + row.failure.reason
                textFormat: Text.PlainText
                color: Theme.quiet
                font.pixelSize: Theme.caption
            }
        }
    }

    PlainButton {
        objectName: "tryAgainButton"
        text: L10n.text("Try again")
        enabled: card.content.canTryAgain
        onClicked: card.tryAgain()
    }
}
