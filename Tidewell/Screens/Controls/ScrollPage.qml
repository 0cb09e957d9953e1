import QtQuick
import QtQuick.Layouts
import QtQuick.Templates as T
import QtQuick.Window
import Tidewell.Screens

// A column of sensible width in the middle of the window, which scrolls when it
// is longer, and by itself to what gets the focus.
FocusScope {
    id: page

    default property alias body: column.data
    property bool centred: false
    // Scrolled to when it is named, and again when the page becomes longer or shorter.
    property Item revealed: null
    readonly property Item focusItem: Window.activeFocusItem

    // Scrolls as little as shows the whole of `item`, or its top when it is taller than the page.
    function reveal(item) {
        const top = item.mapToItem(column, 0, 0).y + column.y;
        const bottom = top + item.height + Theme.medium;
        const lowest = Math.max(0, flickable.contentHeight - flickable.height);
        const least = Math.min(lowest, bottom - flickable.height);
        flickable.contentY = Math.max(0, Math.min(top - Theme.medium, Math.max(least, flickable.contentY)));
    }

    function scrollBy(distance) {
        const lowest = Math.max(0, flickable.contentHeight - flickable.height);
        flickable.contentY = Math.max(0, Math.min(lowest, flickable.contentY + distance));
    }

    onRevealedChanged: if (revealed) reveal(revealed)
    // What is being clicked must not move away from under the pointer.
    onFocusItemChanged: {
        if (focusItem && focusItem.focusReason !== Qt.MouseFocusReason && column.isAncestor(focusItem))
            reveal(focusItem);
    }
    Keys.onUpPressed: scrollBy(-48)
    Keys.onDownPressed: scrollBy(48)
    Keys.onPressed: event => {
        event.accepted = event.key === Qt.Key_PageUp || event.key === Qt.Key_PageDown;
        if (event.accepted)
            scrollBy(flickable.height * (event.key === Qt.Key_PageUp ? -0.9 : 0.9));
    }

    Flickable {
        id: flickable

        anchors.fill: parent
        clip: true
        contentWidth: width
        contentHeight: column.y + column.height + Theme.wide
        boundsBehavior: Flickable.StopAtBounds
        onContentHeightChanged: if (page.revealed) page.reveal(page.revealed)
        T.ScrollBar.vertical: SlimScrollBar {}

        ColumnLayout {
            id: column

            x: (flickable.width - width) / 2
            y: page.centred ? Math.max(Theme.wide, (flickable.height - height) / 2 - Theme.medium) : Theme.wide
            width: Math.min(Theme.columnWidth, flickable.width - 2 * Theme.wide)
            spacing: Theme.medium

            function isAncestor(item) {
                for (let above = item; above; above = above.parent)
                    if (above === column)
                        return true;
                return false;
            }
        }
    }
}
