import QtQuick
import Tidewell.Screens

// Takes a file or folder dragged in from elsewhere, and frames the window meanwhile.
DropArea {
    id: area

    required property bool targeted
    signal targetedWanted(bool wanted)
    signal folderDropped(url folder)

    function fileAmong(drag) {
        return drag.hasUrls ? drag.urls.find(url => String(url).startsWith("file:")) : undefined;
    }

    onContainsDragChanged: targetedWanted(containsDrag)
    onEntered: drag => drag.accepted = fileAmong(drag) !== undefined
    onDropped: drop => {
        const file = fileAmong(drop);
        drop.accepted = file !== undefined;
        if (drop.accepted)
            folderDropped(file);
    }

    Rectangle {
        anchors.fill: parent
        anchors.margins: 4
        visible: area.targeted
        radius: Theme.cardRadius
        border.width: 3
        border.color: Theme.accent
        color: Qt.rgba(Theme.accent.r, Theme.accent.g, Theme.accent.b, 0.12)
    }
}
