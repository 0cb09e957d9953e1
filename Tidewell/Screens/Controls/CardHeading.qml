import QtQuick
import QtQuick.Layouts
import Tidewell.Screens

// The symbol, title and explanation that a card begins with.
RowLayout {
    id: heading

    required property string symbol
    required property string title
    // What the title speaks of; nothing when empty.
    property string subject
    required property string explanation

    spacing: Theme.medium
    Layout.fillWidth: true

    Rectangle {
        Layout.alignment: Qt.AlignTop
        implicitWidth: 44
        implicitHeight: 44
        radius: Theme.cardRadius
        color: Theme.accentSoft

        Symbol {
            anchors.centerIn: parent
            name: heading.symbol
            tint: Theme.accent
        }
    }
    ColumnLayout {
        spacing: Theme.hair
        Layout.fillWidth: true

        Words {
            Layout.fillWidth: true
            text: heading.title
            font.pixelSize: Theme.heading
            font.weight: Font.DemiBold
            wrapMode: Text.Wrap
            Accessible.role: Accessible.Heading
        }
        Words {
            objectName: "cardSubject"
            Layout.fillWidth: true
            visible: text !== ""
            text: heading.subject
            font.weight: Font.Medium
            maximumLineCount: 1
            elide: Text.ElideMiddle
        }
        Words {
            Layout.fillWidth: true
            text: heading.explanation
            color: Theme.quiet
            wrapMode: Text.Wrap
        }
    }
}
