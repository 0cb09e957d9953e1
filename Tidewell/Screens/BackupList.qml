import QtQuick
import QtQuick.Templates as T
import Tidewell.Screens

// The backups. One stop of the Tab key, in which keys choose as in any list. Under the
// chosen row stands what asks for its password; its field gets the focus when the backup
// was chosen in any way but by walking through the list.
ListView {
    id: list

    required property backupStepContent content
    required property BackupRows backups
    required property ExportViewModel controller
    required property bool mayTakeFocus
    readonly property int columnWidth: Math.min(Theme.columnWidth, width - 2 * Theme.wide)
    readonly property int columnX: Math.round((width - columnWidth) / 2)

    property string walkedTo
    property string typed
    property real clickedAt: 0
    property point clickedPlace

    // The second click of a double one must not choose the row that has come under the
    // pointer, when the first one took away what stood above it.
    function click(row, place) {
        const now = Date.now();
        const isNear = Math.abs(place.x - clickedPlace.x) + Math.abs(place.y - clickedPlace.y) < 10;
        const isSecond = isNear && now - clickedAt < Qt.styleHints.mouseDoubleClickInterval;
        clickedAt = now;
        clickedPlace = place;
        if (!isSecond)
            choose(row);
    }

    function choose(row) {
        walkedTo = "";
        if (row === content.chosenRow)
            askPassword();
        else
            controller.selectBackup(backups.idOf(row));
    }

    function takeKey(event, at) {
        clickedAt = 0;
        if (event.key === Qt.Key_Space && typed === "") {
            event.accepted = true;
            if (!event.isAutoRepeat)
                choose(at);
            return;
        }
        const row = rowWanted(event);
        event.accepted = row >= 0;
        if (row < 0 || row === content.chosenRow)
            return;
        walkedTo = backups.idOf(row);
        controller.selectBackup(walkedTo);
        if (currentItem)
            currentItem.focusRow();
    }

    function rowWanted(event) {
        switch (event.key) {
        case Qt.Key_Up:
            return Math.max(0, currentIndex - 1);
        case Qt.Key_Down:
            return Math.min(count - 1, currentIndex + 1);
        case Qt.Key_Home:
            return 0;
        case Qt.Key_End:
            return count - 1;
        }
        const isLetter = event.text > " " || (event.text === " " && typed !== "");
        if (!isLetter || event.modifiers & ~(Qt.ShiftModifier | Qt.KeypadModifier))
            return -1;
        typed += event.text;
        forgetTyped.restart();
        return backups.rowNamed(typed, content.chosenRow);
    }

    function askPassword() {
        if (mayTakeFocus && currentItem)
            currentItem.focusField();
    }

    // As little scrolling as shows the whole of it, or the row when that is too much.
    function showChosen() {
        if (content.chosenRow < 0)
            return;
        forceLayout();
        positionViewAtIndex(content.chosenRow, currentItem && currentItem.height > height ? ListView.Beginning : ListView.Contain);
    }

    function settle() {
        positionViewAtBeginning();
        showChosen();
    }

    readonly property bool isBeingRead: content.isInspecting
    onIsBeingReadChanged: {
        if (isBeingRead)
            return;
        if (backups.idOf(content.chosenRow) !== walkedTo)
            Qt.callLater(askPassword);
        walkedTo = "";
    }

    model: backups
    currentIndex: Math.max(0, content.chosenRow)
    onCurrentIndexChanged: Qt.callLater(showChosen)
    onHeightChanged: Qt.callLater(showChosen)
    keyNavigationEnabled: false
    highlightFollowsCurrentItem: false
    boundsBehavior: Flickable.StopAtBounds
    clip: true
    bottomMargin: Theme.wide - Theme.tight
    T.ScrollBar.vertical: SlimScrollBar {}
    Accessible.role: Accessible.List
    Accessible.name: L10n.text("These Finder backups are on this Mac. Choose one to export.")

    Connections {
        target: list.headerItem
        function onHeightChanged() {
            Qt.callLater(list.settle);
        }
    }
    Timer {
        id: forgetTyped

        interval: 1000
        onTriggered: list.typed = ""
    }

    delegate: FocusScope {
        id: entry

        required property int index
        required property backupRowContent backup

        function focusRow() {
            row.forceActiveFocus(Qt.TabFocusReason);
        }
        function focusField() {
            if (card.item)
                card.item.focusField();
        }

        width: ListView.view.width
        height: column.height + Theme.tight
        onHeightChanged: if (ListView.isCurrentItem) Qt.callLater(list.showChosen)

        Column {
            id: column

            x: list.columnX
            width: list.columnWidth
            spacing: Theme.tight

            BackupRow {
                id: row

                objectName: "backupRow" + entry.index
                width: parent.width
                focus: true
                focusPolicy: entry.ListView.isCurrentItem || activeFocus ? Qt.StrongFocus : Qt.ClickFocus
                backup: entry.backup
                selected: entry.backup.selected
                opensField: entry.backup.asksPassword && !list.content.hasTypedPassword && !list.content.hasStoredPassword
                onClicked: list.click(entry.index, mapToItem(list, pressX, pressY))
                onChosenByKey: list.choose(entry.index)
                Keys.onPressed: event => list.takeKey(event, entry.index)
            }
            Loader {
                id: card

                width: parent.width
                active: entry.backup.asksPassword
                visible: active
                sourceComponent: EncryptedBackupCard {
                    name: entry.backup.name
                    content: list.content
                    takesFocus: list.content.wantsPasswordFocus && list.mayTakeFocus
                    controller: list.controller
                }
            }
        }
    }
}
