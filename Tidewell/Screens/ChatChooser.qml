import QtQuick
import QtQuick.Layouts
import Tidewell.Screens

// The chats of the backup, each with a check box, to be searched and chosen from.
ModalPanel {
    id: chooser

    required property chatChoiceContent content
    required property ChatRows chats
    required property ExportViewModel controller

    function close() {
        controller.showChats(false);
    }

    objectName: "chatChooser"
    title: L10n.text("Choose chats")
    description: content.chats
    width: Math.min(600, parent.width - 2 * Theme.wide)
    padding: Theme.medium
    onEscaped: close()
    onAboutToShow: {
        searchField.clear();
        list.currentIndex = 0;
        list.positionViewAtBeginning();
    }
    onOpened: searchField.forceActiveFocus(Qt.TabFocusReason)

    RowLayout {
        Layout.fillWidth: true
        spacing: Theme.snug

        Words {
            Layout.fillWidth: true
            text: chooser.title
            font.pixelSize: Theme.heading
            font.weight: Font.DemiBold
            elide: Text.ElideRight
        }
        Words {
            objectName: "listedChats"
            text: L10n.joined([chooser.content.chats, chooser.content.size], " · ")
            color: Theme.quiet
        }
    }
    RowLayout {
        Layout.fillWidth: true
        spacing: Theme.tight

        PlainField {
            id: searchField

            objectName: "chatSearchField"
            Layout.fillWidth: true
            focus: true
            placeholderText: L10n.text("Search chats")
            onTextEdited: chooser.controller.searchChats(text)
            Keys.onDownPressed: list.takeFocus()
            Keys.onReturnPressed: event => event.isAutoRepeat || chooser.close()
            Keys.onEnterPressed: event => event.isAutoRepeat || chooser.close()
            Accessible.name: placeholderText
        }
        PlainButton {
            objectName: "selectAllChatsButton"
            text: L10n.text("Select All")
            enabled: !chooser.content.foundNone
            onClicked: chooser.controller.setFoundChatsIncluded(true)
        }
        PlainButton {
            objectName: "selectNoChatsButton"
            text: L10n.text("Select None")
            enabled: !chooser.content.foundNone
            onClicked: chooser.controller.setFoundChatsIncluded(false)
        }
    }
    Rectangle {
        Layout.fillWidth: true
        Layout.fillHeight: true
        implicitHeight: Theme.body * 26
        color: "transparent"
        radius: Theme.controlRadius
        border.width: 1
        border.color: Theme.line

        RowList {
            id: list

            objectName: "chatRow"
            anchors.fill: parent
            anchors.margins: Theme.hair
            model: chooser.chats
            // Rows that are made ahead would outlive a search that leaves fewer.
            cacheBuffer: 0
            note: chooser.content.foundNone ? L10n.text("No chat has this name or number.") : ""
            Keys.onReturnPressed: event => event.isAutoRepeat || chooser.close()
            Keys.onEnterPressed: event => event.isAutoRepeat || chooser.close()
            Accessible.name: L10n.text("Chats")

            delegate: CheckRow {
                id: row

                required property int index
                required property chatRowContent chat

                objectName: list.objectName + index
                width: ListView.view.width
                sidePadding: Theme.snug
                mostLines: 2
                text: chat.name
                trailing: chat.size
                checked: chat.included
                focusPolicy: ListView.isCurrentItem || activeFocus ? Qt.StrongFocus : Qt.ClickFocus
                onWanted: on => {
                    list.currentIndex = index;
                    chooser.controller.setChatIncluded(chat.id, on);
                }
                Accessible.name: chat.accessibleName
            }
        }
    }
    PrimaryButton {
        objectName: "chatsChosenButton"
        Layout.alignment: Qt.AlignRight
        text: L10n.text("Done")
        onClicked: chooser.close()
    }
}
