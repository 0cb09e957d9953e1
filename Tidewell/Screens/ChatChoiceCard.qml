import QtQuick
import QtQuick.Layouts
import Tidewell.Screens

// Which chats and which days are wanted.
Card {
    id: card

    required property chatChoiceContent content
    signal chooseChats()
    signal firstDayTyped(string text)
    signal lastDayTyped(string text)

    component DayField: PlainField {
        Layout.preferredWidth: Math.round(Theme.body * 8.5)
        placeholderText: "2024-05-31"
        inputMethodHints: Qt.ImhDate | Qt.ImhNoPredictiveText
        Accessible.description: card.content.fault
    }

    readonly property bool hasDays: content.firstDay + content.lastDay !== ""

    padding: Theme.medium
    spacing: Theme.tight

    GridLayout {
        Layout.fillWidth: true
        columns: card.width - 2 * card.padding >= chats.implicitWidth + days.implicitWidth + columnSpacing ? 2 : 1
        columnSpacing: Theme.medium
        rowSpacing: Theme.tight

        RowLayout {
            id: chats

            Layout.fillWidth: true
            spacing: Theme.snug

            Words {
                text: L10n.text("Chats")
                font.pixelSize: Theme.heading
                font.weight: Font.DemiBold
                Accessible.role: Accessible.Heading
            }
            Words {
                objectName: "chosenChats"
                text: card.content.chats
                color: Theme.quiet
            }
            PlainButton {
                objectName: "chooseChatsButton"
                text: L10n.text("Choose…")
                enabled: card.content.canChoose
                Accessible.name: L10n.text("Choose chats")
                Accessible.description: card.content.chats
                onClicked: card.chooseChats()
            }
        }
        RowLayout {
            id: days

            spacing: Theme.tight

            Words {
                text: L10n.text("From")
                Accessible.ignored: true
            }
            DayField {
                objectName: "firstDayField"
                Accessible.name: L10n.text("First day")
                Component.onCompleted: text = card.content.firstDay
                onTextEdited: card.firstDayTyped(text)
            }
            Words {
                text: L10n.text("to")
                Accessible.ignored: true
            }
            DayField {
                objectName: "lastDayField"
                Accessible.name: L10n.text("Last day")
                Component.onCompleted: text = card.content.lastDay
                onTextEdited: card.lastDayTyped(text)
            }
        }
    }
    Words {
        objectName: "daysText"
        Layout.fillWidth: true
        visible: card.hasDays
        text: card.content.fault !== "" ? card.content.fault : L10n.text("Messages and files without a known date are left out. What was exported before stays.")
        color: card.content.fault !== "" ? Theme.warning : Theme.quiet
        font.pixelSize: Theme.caption
        wrapMode: Text.Wrap
        Accessible.role: card.content.fault !== "" ? Accessible.AlertMessage : Accessible.StaticText
    }
}
