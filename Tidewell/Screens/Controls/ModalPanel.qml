import QtQuick
import QtQuick.Layouts
import QtQuick.Templates as T
import Tidewell.Screens

// A panel over the darkened window that takes the focus and gives it back when it
// goes, at once so that it is in nobody's way. It goes only when its owner makes
// it invisible; Escape asks for that.
T.Popup {
    id: panel

    default property alias body: column.data
    property int role: Accessible.Dialog
    required property string title
    required property string description
    signal escaped()

    parent: T.Overlay.overlay
    x: Math.round((parent.width - width) / 2)
    y: Math.round((parent.height - height) / 2)
    width: Math.min(420, parent.width - 2 * Theme.wide)
    height: Math.min(implicitHeight, parent.height - 2 * Theme.medium)
    implicitHeight: column.implicitHeight + 2 * padding
    padding: Theme.wide
    modal: true
    dim: true
    focus: true
    closePolicy: T.Popup.NoAutoClose
    onVisibleChanged: Beat.shades += visible ? 1 : -1

    enter: Transition {
        NumberAnimation {
            property: "opacity"
            from: 0
            to: 1
            duration: Theme.quick
        }
    }
    background: Rectangle {
        radius: Theme.cardRadius + 4
        color: Theme.surface
        border.width: 1
        border.color: Theme.line
    }
    T.Overlay.modal: Rectangle {
        color: Theme.shade
    }
    contentItem: FocusScope {
        focus: true
        LayoutMirroring.enabled: Qt.application.layoutDirection === Qt.RightToLeft
        LayoutMirroring.childrenInherit: true
        Accessible.role: panel.role
        Accessible.name: panel.title
        Accessible.description: panel.description
        Keys.onEscapePressed: event => event.isAutoRepeat || panel.escaped()

        ColumnLayout {
            id: column

            anchors.fill: parent
            spacing: Theme.medium
        }
    }
}
