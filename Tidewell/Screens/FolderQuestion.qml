import QtQuick
import QtQuick.Dialogs
import Tidewell.Screens

// Asks for a folder with the platform's dialog.
FolderDialog {
    id: dialog

    required property FolderPrompt folders

    readonly property Connections prompt: Connections {
        target: dialog.folders
        function onChanged() {
            if (!dialog.folders.isOpen)
                return dialog.close();
            dialog.currentFolder = dialog.folders.initialFolder;
            dialog.open();
        }
    }

    title: folders.title
    acceptLabel: folders.confirmButton
    options: folders.canCreateFolders ? FolderDialog.ShowDirsOnly : FolderDialog.ShowDirsOnly | FolderDialog.ReadOnly
    onAccepted: folders.choose(selectedFolder)
    onRejected: folders.cancel()
}
