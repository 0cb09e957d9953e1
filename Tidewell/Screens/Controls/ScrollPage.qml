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
    readonly property Item focusItem: Window.activeFocusItem

    // When the page has been laid out.
    function reveal(item) {
        Qt.callLater(() => scroller.reveal(item));
    }

    onFocusItemChanged: if (scroller.isReachedByKeys(focusItem)) scroller.reveal(focusItem)
    Keys.onUpPressed: scroller.by(-48)
    Keys.onDownPressed: scroller.by(48)
    Keys.onPressed: event => scroller.takePageKey(event)

    Scroller {
        id: scroller

        flickable: flickable
        margin: Theme.medium
    }
    Flickable {
        id: flickable

        objectName: "pageScroller"
        anchors.fill: parent
        clip: true
        contentWidth: width
        contentHeight: column.y + column.height + Theme.wide
        boundsBehavior: Flickable.StopAtBounds
        T.ScrollBar.vertical: SlimScrollBar {}

        ColumnLayout {
            id: column

            x: (flickable.width - width) / 2
            y: page.centred ? Math.max(Theme.wide, (flickable.height - height) / 2 - Theme.medium) : Theme.wide
            width: Math.min(Theme.columnWidth, flickable.width - 2 * Theme.wide)
            spacing: Theme.medium
        }
    }
}
