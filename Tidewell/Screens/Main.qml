import QtQuick
import QtQuick.Controls.Basic
import Tidewell.Screens

// The application's window, and the question for a folder that belongs to it.
ApplicationWindow {
    id: window

    required property WizardScreens screens
    required property FolderPrompt folders

    // As large as shows the whole of the options.
    width: 900
    height: 64 * Theme.body
    minimumWidth: 600
    minimumHeight: 430
    title: Qt.application.displayName
    color: Theme.window

    onActiveChanged: if (active) screens.controller.comeBack()
    onClosing: close => close.accepted = screens.controller.mayClose()

    Connections {
        target: window.screens.controller
        function onCloseConfirmed() {
            window.close();
        }
    }
    Shortcut {
        sequences: ["Ctrl+Q", "Ctrl+W"]
        autoRepeat: false
        onActivated: window.close()
    }
    ContentView {
        anchors.fill: parent
        focus: true
        screens: window.screens
    }
    FolderQuestion {
        anchors.fill: parent
        folders: window.folders
    }
}
