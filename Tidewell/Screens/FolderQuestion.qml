import QtQuick
import QtQuick.Dialogs
import QtQuick.Templates as T
import Tidewell.Screens

// Asks for a folder with the platform's dialog. Such dialogs have no place for
// the question's message, which stands at the top of the window meanwhile.
Item {
    id: question

    required property FolderPrompt folders

    Connections {
        target: question.folders
        function onChanged() {
            if (!question.folders.isOpen)
                return dialog.close();
            dialog.currentFolder = question.folders.initialFolder;
            dialog.open();
        }
    }
    FolderDialog {
        id: dialog

        title: question.folders.title
        acceptLabel: question.folders.confirmButton
        options: question.folders.canCreateFolders ? FolderDialog.ShowDirsOnly : FolderDialog.ShowDirsOnly | FolderDialog.ReadOnly
        onAccepted: question.folders.choose(selectedFolder)
        onRejected: question.folders.cancel()
    }
    T.Popup {
        objectName: "folderMessage"
        parent: T.Overlay.overlay
        // Above a dialog that Qt itself draws within the window.
        z: 10
        width: parent.width
        // As high as the dialog leaves free in the smallest window.
        height: Math.max(40, message.implicitHeight + 2 * padding)
        padding: Theme.hair
        visible: question.folders.isOpen && question.folders.message !== ""
        closePolicy: T.Popup.NoAutoClose

        background: Rectangle {
            color: Theme.accentSoft
        }
        contentItem: Words {
            id: message

            text: question.folders.message
            font.pixelSize: Theme.caption
            lineHeight: 1
            leftPadding: Theme.medium
            rightPadding: Theme.medium
            horizontalAlignment: Text.AlignHCenter
            verticalAlignment: Text.AlignVCenter
            wrapMode: Text.Wrap
            Accessible.role: Accessible.AlertMessage
        }
    }
}
