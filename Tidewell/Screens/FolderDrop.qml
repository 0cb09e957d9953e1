import QtQuick
import Tidewell.Screens

// Takes a file or folder dragged in from elsewhere, and frames the window meanwhile.
// A backup is read where it is: whoever drags it is told that it was copied, so that
// nobody removes it, and is refused where only moving is on offer.
DropArea {
    id: area

    required property bool targeted
    signal targetedWanted(bool wanted)
    signal folderDropped(url folder)

    function fileAmong(drag) {
        return drag.hasUrls ? drag.urls.find(url => String(url).startsWith("file:")) : undefined;
    }

    function take(drag) {
        const isTaken = fileAmong(drag) !== undefined && (drag.supportedActions & Qt.CopyAction) !== 0;
        if (isTaken)
            drag.accept(Qt.CopyAction);
        else
            drag.accept(Qt.IgnoreAction);
        return isTaken;
    }

    onContainsDragChanged: targetedWanted(containsDrag)
    onEntered: drag => drag.accepted = take(drag)
    onPositionChanged: drag => take(drag)
    onDropped: drop => {
        drop.accepted = take(drop);
        if (drop.accepted)
            folderDropped(fileAmong(drop));
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
