import QtQuick
import QtQuick.Templates as T
import Tidewell.Screens

// Asks for a folder: with our own chooser, or while the desktop's dialog does. Such dialogs
// have no place for the question's message, which stands at the top of the window meanwhile.
Item {
    id: question

    required property FolderPrompt folders

    FolderChooser {
        folders: question.folders
        visible: question.folders.isInWindow
    }
    T.Popup {
        objectName: "folderMessage"
        parent: T.Overlay.overlay
        width: parent.width
        height: message.implicitHeight + 2 * padding
        padding: Theme.tight
        visible: question.folders.isOnDesktop && question.folders.message !== ""
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
