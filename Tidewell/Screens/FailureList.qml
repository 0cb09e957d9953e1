import QtQuick
import QtQuick.Layouts
import QtQuick.Templates as T
import Tidewell.Screens

// The files that are not in the export, each with its chat and the reason.
Card {
    id: card

    required property doneStepContent content
    signal tryAgain()

    padding: Theme.medium
    spacing: Theme.snug

    RowLayout {
        spacing: Theme.snug
        Layout.fillWidth: true

        Words {
            Layout.fillWidth: true
            text: L10n.text("What could not be copied")
            font.pixelSize: Theme.heading
            font.weight: Font.DemiBold
            wrapMode: Text.Wrap
            Accessible.role: Accessible.Heading
        }
        CopyButton {
            objectName: "copyFailuresButton"
            label: L10n.text("Copy list")
            copied: card.content.failureList
        }
        PlainButton {
            objectName: "tryAgainButton"
            text: L10n.text("Try again")
            onClicked: card.tryAgain()
        }
    }
    ListView {
        id: list

        objectName: "failureList"
        Layout.fillWidth: true
        Layout.preferredHeight: Math.min(contentHeight, 5 * (Theme.body + Theme.caption + 20))
        model: card.content.failures.length
        clip: true
        boundsBehavior: Flickable.StopAtBounds
        activeFocusOnTab: true
        keyNavigationEnabled: true
        Accessible.role: Accessible.List
        Accessible.name: L10n.text("What could not be copied")
        T.ScrollBar.vertical: SlimScrollBar {}

        delegate: ColumnLayout {
            id: row

            required property int index
            readonly property failureContent failure: card.content.failures[index]

            width: list.width - 2 * Theme.snug
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
        FocusRing {
            shown: list.activeFocus
            around: 4
        }
    }
    Words {
        objectName: "moreFailures"
        visible: text !== ""
        text: card.content.moreFailures
        color: Theme.quiet
    }
}
