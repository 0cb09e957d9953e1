import QtQuick
import QtQuick.Layouts
import Tidewell.Screens

// What this application does, and which step of it this is.
Rectangle {
    id: header

    required property int step
    required property string caption

    implicitHeight: row.implicitHeight + 2 * Theme.medium
    color: Theme.surface

    Rectangle {
        anchors.bottom: parent.bottom
        width: parent.width
        height: 1
        color: Theme.line
    }
    RowLayout {
        id: row

        anchors.fill: parent
        anchors.leftMargin: Theme.wide
        anchors.rightMargin: Theme.wide
        spacing: Theme.wide

        ColumnLayout {
            spacing: 2
            Layout.fillWidth: true

            Words {
                objectName: "header"
                Layout.fillWidth: true
                text: L10n.text("Export chats and media from a Finder iPhone backup for WhatsApp")
                font.pixelSize: Theme.heading
                font.weight: Font.DemiBold
                wrapMode: Text.Wrap
                Accessible.role: Accessible.Heading
            }
            Words {
                objectName: "stepCaption"
                Layout.fillWidth: true
                text: header.caption
                color: Theme.quiet
                wrapMode: Text.Wrap
            }
        }
        StepDots {
            step: header.step
        }
    }
}
