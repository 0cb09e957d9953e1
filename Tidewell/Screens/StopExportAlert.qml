import QtQuick
import QtQuick.Layouts
import Tidewell.Screens

// Asks before a running export is ended. It goes on meanwhile.
ModalPanel {
    id: alert

    signal keepGoing()
    signal stop()

    objectName: "stopExportAlert"
    role: Accessible.AlertMessage
    title: L10n.text("Stop the export?")
    description: L10n.text("What was copied so far is kept, and the next export goes on from there.")
    onEscaped: keepGoing()

    Words {
        Layout.fillWidth: true
        text: alert.title
        font.pixelSize: Theme.heading
        font.weight: Font.DemiBold
        wrapMode: Text.Wrap
    }
    Words {
        Layout.fillWidth: true
        text: alert.description
        color: Theme.quiet
        wrapMode: Text.Wrap
    }
    RowLayout {
        Layout.alignment: Qt.AlignRight
        Layout.topMargin: Theme.tight
        spacing: Theme.snug

        PlainButton {
            objectName: "stopExportButton"
            text: L10n.text("Stop the export")
            onClicked: alert.stop()
        }
        PrimaryButton {
            objectName: "keepExportingButton"
            focus: true
            text: L10n.text("Keep exporting")
            onClicked: alert.keepGoing()
            Accessible.description: alert.title + "\n" + alert.description
        }
    }
}
