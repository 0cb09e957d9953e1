import QtQuick
import QtQuick.Templates as T
import Tidewell.Screens

// A list that is one stop of the Tab key; keys walk in it.
ListView {
    id: list

    // Which row typed letters mean, from the current one on; null: they mean nothing.
    property var rowNamed: null
    // Shown, and where the Tab key stops, when there is no row.
    property string note
    property string typed
    property int reason: Qt.TabFocusReason
    signal keyTaken()

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

    function takeKey(event) {
        keyTaken();
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
}
