import QtQuick
import QtQuick.Layouts
import QtQuick.Templates as T
import Tidewell.Screens

// A step's buttons at the right, the main one last, and at the left what goes on
// or what is still missing. Return presses the button named here; Escape is told.
RowLayout {
    id: footer

    default property alias buttons: row.data
    property string busyText
    property string hint
    property bool hintIsLink: false
    property T.AbstractButton defaultButton: null
    signal hintClicked()
    signal escaped()

    spacing: Theme.medium
    Component.onCompleted: Mnemonics.assign(Array.from(row.children))

    Spinner {
        objectName: "busySpinner"
        size: 18
        visible: footer.busyText !== ""
    }
    Words {
        objectName: "busyText"
        Layout.fillWidth: true
        text: footer.busyText
        color: Theme.quiet
        elide: Text.ElideRight
        visible: text !== ""
    }
    Words {
        objectName: "hint"
        Layout.fillWidth: true
        text: footer.hint
        color: Theme.quiet
        wrapMode: Text.Wrap
        maximumLineCount: 2
        elide: Text.ElideRight
        visible: text !== "" && !footer.hintIsLink
    }
    LinkButton {
        objectName: "hintLink"
        text: footer.hint
        visible: text !== "" && footer.hintIsLink
        onClicked: footer.hintClicked()
        Layout.fillWidth: true
        Layout.maximumWidth: implicitWidth
    }
    Item {
        Layout.fillWidth: true
        visible: footer.busyText === "" && (footer.hint === "" || footer.hintIsLink)
    }
    RowLayout {
        id: row

        spacing: Theme.snug
    }
}
