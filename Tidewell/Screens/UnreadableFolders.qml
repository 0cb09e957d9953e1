import QtQuick
import QtQuick.Layouts
import Tidewell.Screens

// How many folders among the backups are none that can be read, and on demand why.
ColumnLayout {
    id: section

    required property backupStepContent content
    property bool areReasonsShown: false

    visible: content.unreadable !== ""
    height: visible ? implicitHeight : 0
    spacing: Theme.hair

    LinkButton {
        objectName: "unreadableLink"
        text: section.content.unreadable
        onClicked: section.areReasonsShown = !section.areReasonsShown
    }
    Words {
        objectName: "unreadableReasons"
        Layout.fillWidth: true
        visible: section.areReasonsShown
        text: section.content.unreadableReasons
        color: Theme.quiet
        font.pixelSize: Theme.caption
        wrapMode: Text.Wrap
    }
}
