import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Dialogs
import Tidewell.Screens

// The application's window, and the platform's folder dialog that belongs to it.
ApplicationWindow {
    id: window

    required property WizardScreens screens
    required property FolderPrompt folders

    // As large as shows the whole of the options.
    width: 900
    height: 58 * Theme.body
    minimumWidth: 600
    minimumHeight: 430
    title: Qt.application.displayName
    color: Theme.window

    // For the folder dialog that Qt draws where the desktop has none: parts of it are white
    // whatever the colours, so it stays light.
    palette.window: "#ffffff"
    palette.windowText: "#15202b"
    palette.base: "#ffffff"
    palette.text: "#15202b"
    palette.button: "#e6ebee"
    palette.buttonText: "#15202b"
    palette.light: "#f8fafb"
    palette.midlight: "#eaeff1"
    palette.mid: "#dde3e6"
    palette.dark: "#566470"
    palette.highlight: "#0a7565"
    palette.highlightedText: "#15202b"

    onActiveChanged: if (active) screens.controller.refreshLibraryOnReturn()
    onClosing: close => close.accepted = screens.controller.mayClose()

    Connections {
        target: window.screens.controller
        function onCloseConfirmed() {
            window.close();
        }
    }
    Shortcut {
        sequences: ["Ctrl+Q", "Ctrl+W"]
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
