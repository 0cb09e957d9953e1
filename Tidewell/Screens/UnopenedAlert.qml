import QtQuick
import QtQuick.Layouts
import Tidewell.Screens

// Names what the desktop could not open, so that people can.
ModalPanel {
    id: alert

    required property string path
    signal dismissed()

    objectName: "unopenedAlert"
    role: Accessible.AlertMessage
    title: L10n.text("This could not be opened")
    description: L10n.text("Open it by hand. It is here:") + " " + path
    onEscaped: dismissed()

    Words {
        Layout.fillWidth: true
        text: alert.title
        font.pixelSize: Theme.heading
        font.weight: Font.DemiBold
        wrapMode: Text.Wrap
    }
    Words {
        Layout.fillWidth: true
        text: L10n.text("Open it by hand. It is here:")
        color: Theme.quiet
        wrapMode: Text.Wrap
    }
    Words {
        objectName: "unopenedPath"
        Layout.fillWidth: true
        text: alert.path
        wrapMode: Text.WrapAnywhere
    }
    RowLayout {
        Layout.alignment: Qt.AlignRight
        Layout.topMargin: Theme.tight
        spacing: Theme.snug

        CopyButton {
            objectName: "copyPathButton"
            label: L10n.text("Copy path")
            copied: alert.path
        }
        PrimaryButton {
            objectName: "closeUnopenedButton"
            focus: true
            text: L10n.text("Close")
            onClicked: alert.dismissed()
            Accessible.description: alert.title + "\n" + alert.description
        }
    }
}
