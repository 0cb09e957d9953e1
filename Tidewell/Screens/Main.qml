import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Dialogs
import Tidewell.Screens

// The application's window, and the platform's folder dialog that belongs to it.
ApplicationWindow {
    id: window

    required property WizardScreens screens
    required property FolderPrompt folders

    width: 900
    height: 740
    minimumWidth: 640
    minimumHeight: 480
    title: Qt.application.displayName
    color: Theme.window

    palette.window: Theme.window
    palette.windowText: Theme.text
    palette.base: Theme.surface
    palette.text: Theme.text
    palette.button: Theme.pressed
    palette.buttonText: Theme.text
    palette.light: Theme.hover
    palette.midlight: Theme.pressed
    palette.mid: Theme.line
    palette.dark: Theme.quiet
    palette.highlight: Theme.accent
    palette.highlightedText: Theme.accentInk
    palette.placeholderText: Theme.quiet
    palette.brightText: Theme.text

    ContentView {
        anchors.fill: parent
        focus: true
        screens: window.screens
    }
    FolderQuestion {
        folders: window.folders
    }
}
