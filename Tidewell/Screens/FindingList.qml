import QtQuick
import QtQuick.Layouts
import Tidewell.Screens

// What the verification found, each a sentence that says what to do.
ListCard {
    id: card

    required property doneStepContent content
    signal exportAgain()

    title: content.verdict
    copied: content.findingList
    count: content.findings.length
    more: content.moreFindings
    listName: "findingList"
    copyName: "copyFindingsButton"
    moreName: "moreFindings"
    row: Text {
        required property int index

        width: ListView.view.width - 2 * Theme.snug
        topPadding: 4
        bottomPadding: 4
        text: card.content.findings[index]
        textFormat: Text.PlainText
        color: Theme.text
        font.pixelSize: Theme.body
        horizontalAlignment: Text.AlignLeft
        wrapMode: Text.Wrap
        Accessible.role: Accessible.ListItem
        Accessible.name: text
    }

    PlainButton {
        objectName: "exportAgainButton"
        text: L10n.text("Export again")
        enabled: card.content.canTryAgain
        onClicked: card.exportAgain()
    }
}
