import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import Tidewell.Screens

// Says what went wrong, until it is acknowledged.
ModalPanel {
    id: alert

    required property string message
    property bool offersSamePerson: false
    signal dismissed()
    signal samePerson()

    objectName: "errorAlert"
    role: Accessible.AlertMessage
    title: L10n.text("Something went wrong")
    description: message
    onEscaped: dismissed()

    // No layout: before the alert is first seen it would measure the title at no width,
    // and keep the height that this takes.
    Item {
        Layout.fillWidth: true
        implicitHeight: Math.max(sign.height, title.height)

        Symbol {
            id: sign

            anchors.left: parent.left
            anchors.verticalCenter: title.verticalCenter
            width: size
            height: size
            name: "exclamationmark.triangle"
            tint: Theme.warning
        }
        Words {
            id: title

            anchors.left: sign.right
            anchors.leftMargin: Theme.snug
            anchors.right: parent.right
            text: alert.title
            font.pixelSize: Theme.heading
            font.weight: Font.DemiBold
            wrapMode: Text.Wrap
        }
    }
    ScrollView {
        id: scroll

        Layout.fillWidth: true
        Layout.fillHeight: true
        implicitHeight: text.implicitHeight
        contentWidth: availableWidth
        ScrollBar.vertical: SlimScrollBar {
            parent: scroll
            x: scroll.width - width + Theme.medium
            height: scroll.height
        }

        Words {
            id: text

            objectName: "errorText"
            width: scroll.availableWidth
            text: alert.message
            color: Theme.quiet
            wrapMode: Text.Wrap
        }
    }
    RowLayout {
        Layout.alignment: Qt.AlignRight
        spacing: Theme.snug

        PlainButton {
            objectName: "samePersonButton"
            visible: alert.offersSamePerson
            text: L10n.text("Same person, another number")
            onClicked: alert.samePerson()
        }
        PrimaryButton {
            objectName: "alertOKButton"
            focus: true
            text: L10n.text("OK")
            onClicked: alert.dismissed()
            Accessible.description: alert.title + "\n" + alert.message
        }
    }
}
