import QtQuick
import QtQuick.Layouts
import Tidewell.Screens

// Texts with the numbers that they stand in order by.
ColumnLayout {
    id: list

    required property var texts

    spacing: Theme.tight
    Accessible.role: Accessible.List

    Repeater {
        model: list.texts.length

        RowLayout {
            id: line

            required property int index

            spacing: Theme.snug
            Layout.fillWidth: true
            Accessible.role: Accessible.ListItem
            Accessible.name: (index + 1) + ". " + list.texts[index]

            Rectangle {
                id: badge

                Layout.alignment: Qt.AlignTop
                implicitWidth: 22
                implicitHeight: 22
                radius: 11
                color: Theme.pressed

                Text {
                    anchors.centerIn: parent
                    text: line.index + 1
                    color: Theme.quiet
                    font.pixelSize: Theme.caption
                    font.weight: Font.DemiBold
                }
            }
            Text {
                Layout.fillWidth: true
                Layout.alignment: Qt.AlignTop
                // In line with the number.
                Layout.topMargin: Math.max(0, Math.round((badge.height - 1.4 * font.pixelSize) / 2))
                text: list.texts[line.index]
                textFormat: Text.PlainText
                color: Theme.text
                font.pixelSize: Theme.body
                lineHeight: 1.15
                horizontalAlignment: Text.AlignLeft
                wrapMode: Text.Wrap
            }
        }
    }
}
