import QtQuick
import QtQuick.Layouts
import QtQuick.Templates as T
import Tidewell.Screens

// A list under its heading, to be read and copied; a few rows are seen at a time. Buttons
// that are put into it stand beside that for copying.
Card {
    id: card

    required property string title
    required property string copied
    required property int count
    // Of a row; it has the width of its view, but for the scroll bar.
    required property Component row
    // Below the last row.
    property string more
    property alias listName: list.objectName
    property alias copyName: copyButton.objectName
    property alias moreName: moreWords.objectName
    default property alias buttons: buttonRow.data

    padding: Theme.medium
    spacing: Theme.snug

    RowLayout {
        spacing: Theme.snug
        Layout.fillWidth: true

        Words {
            Layout.fillWidth: true
            text: card.title
            font.pixelSize: Theme.heading
            font.weight: Font.DemiBold
            wrapMode: Text.Wrap
            Accessible.role: Accessible.Heading
        }
        CopyButton {
            id: copyButton

            label: L10n.text("Copy list")
            copied: card.copied
        }
        RowLayout {
            id: buttonRow

            spacing: Theme.snug
        }
    }
    ListView {
        id: list

        Layout.fillWidth: true
        Layout.preferredHeight: Math.min(contentHeight, 5 * (Theme.body + Theme.caption + 20))
        model: card.count
        delegate: card.row
        clip: true
        boundsBehavior: Flickable.StopAtBounds
        activeFocusOnTab: true
        keyNavigationEnabled: true
        Accessible.role: Accessible.List
        Accessible.name: card.title
        T.ScrollBar.vertical: SlimScrollBar {}

        FocusRing {
            shown: list.activeFocus
            around: 4
        }
    }
    Words {
        id: moreWords

        visible: text !== ""
        text: card.more
        color: Theme.quiet
    }
}
