import QtQuick
import QtQuick.Templates as T
import Tidewell.Screens

// Folders to go to, each with a symbol. One stop of the Tab key; keys walk in it, Return
// or a click goes.
ListView {
    id: list

    // One for each row; "folder" without.
    property var symbols: []
    // The row that is where one is; -1: none.
    property int marked: -1
    // Which row typed letters mean, from the current one on; null: they mean nothing.
    property var rowNamed: null
    // Shown, and where the Tab key stops, when there is no row.
    property string note
    signal opened(int row)

    property string typed
    property real clickedAt: 0
    property int reason: Qt.TabFocusReason

    // To the current row, or to the note when there is none.
    function takeFocus() {
        forceLayout();
        if (currentItem)
            currentItem.forceActiveFocus(reason);
        else if (emptiness.visible)
            emptiness.forceActiveFocus(reason);
        else
            forceActiveFocus(reason);
    }

    function walkTo(row) {
        reason = Qt.TabFocusReason;
        currentIndex = row;
        positionViewAtIndex(row, ListView.Contain);
        takeFocus();
    }

    function open(row) {
        typed = "";
        opened(row);
    }

    // The second click of a double one must not go on from the folder that the first one opened.
    function click(row) {
        const now = Date.now();
        const isSecond = now - clickedAt < Qt.styleHints.mouseDoubleClickInterval;
        clickedAt = now;
        reason = Qt.MouseFocusReason;
        if (!isSecond)
            open(row);
    }

    function takeKey(event) {
        clickedAt = 0;
        const row = rowWanted(event);
        event.accepted = row >= 0;
        if (row >= 0 && row < count)
            walkTo(row);
    }

    function rowWanted(event) {
        const page = Math.max(1, Math.floor(height / Math.max(1, currentItem ? currentItem.height : 1)) - 1);
        const isPlain = !(event.modifiers & ~(Qt.ShiftModifier | Qt.KeypadModifier));
        if (!isPlain || count === 0)
            return -1;
        switch (event.key) {
        case Qt.Key_Up:
            return Math.max(0, currentIndex - 1);
        case Qt.Key_Down:
            return Math.min(count - 1, currentIndex + 1);
        case Qt.Key_PageUp:
            return Math.max(0, currentIndex - page);
        case Qt.Key_PageDown:
            return Math.min(count - 1, currentIndex + page);
        case Qt.Key_Home:
            return 0;
        case Qt.Key_End:
            return count - 1;
        }
        if (!rowNamed || !(event.text > " " || (event.text === " " && typed !== "")))
            return -1;
        typed += event.text;
        forgetTyped.restart();
        return Math.max(rowNamed(typed, currentIndex), -1);
    }

    // Rows that are made ahead would outlive a folder that has fewer.
    cacheBuffer: 0
    onCountChanged: currentIndex = Math.max(0, currentIndex)
    keyNavigationEnabled: false
    highlightFollowsCurrentItem: false
    boundsBehavior: Flickable.StopAtBounds
    clip: true
    T.ScrollBar.vertical: SlimScrollBar {}
    Keys.onPressed: event => takeKey(event)
    Accessible.role: Accessible.List

    Words {
        id: emptiness

        parent: list
        anchors.centerIn: parent
        width: Math.min(implicitWidth, parent.width - 2 * Theme.snug)
        visible: list.count === 0 && text !== ""
        text: list.note
        color: Theme.quiet
        horizontalAlignment: Text.AlignHCenter
        wrapMode: Text.Wrap
        activeFocusOnTab: true
    }
    Timer {
        id: forgetTyped

        interval: 1000
        onTriggered: list.typed = ""
    }

    delegate: T.ItemDelegate {
        id: row

        required property int index
        required property var model
        readonly property string name: model.display
        readonly property bool isMarked: index === list.marked

        objectName: list.objectName + index
        width: ListView.view.width
        implicitHeight: Math.round(Theme.body * 2.3)
        leftPadding: Theme.tight
        rightPadding: Theme.snug
        text: name
        hoverEnabled: true
        focusPolicy: ListView.isCurrentItem || activeFocus ? Qt.StrongFocus : Qt.ClickFocus
        onClicked: list.click(index)
        Keys.onReturnPressed: event => event.isAutoRepeat || list.open(index)
        Keys.onEnterPressed: event => event.isAutoRepeat || list.open(index)
        Keys.onSpacePressed: event => {
            if (list.typed !== "")
                list.takeKey(event);
            else if (!event.isAutoRepeat)
                list.open(index);
        }
        Accessible.role: Accessible.ListItem
        Accessible.name: name
        Accessible.selectable: true
        Accessible.selected: isMarked
        Accessible.onPressAction: list.open(index)

        background: Rectangle {
            radius: Theme.controlRadius
            color: row.isMarked ? Theme.accentSoft : row.down ? Theme.pressed : row.hovered ? Theme.hover : "transparent"
            border.width: row.visualFocus ? Theme.focusWidth : 0
            border.color: Theme.accent
        }
        contentItem: Item {
            Symbol {
                id: symbol

                anchors.verticalCenter: parent.verticalCenter
                name: list.symbols[row.index] ?? "folder"
                tint: row.isMarked ? Theme.accent : Theme.quiet
                size: 18
            }
            Text {
                anchors.fill: parent
                anchors.leftMargin: symbol.width + Theme.tight
                text: row.name
                textFormat: Text.PlainText
                color: Theme.text
                font.pixelSize: Theme.body
                horizontalAlignment: Text.AlignLeft
                verticalAlignment: Text.AlignVCenter
                maximumLineCount: 1
                elide: Text.ElideMiddle
                Accessible.ignored: true
            }
        }
    }
}
