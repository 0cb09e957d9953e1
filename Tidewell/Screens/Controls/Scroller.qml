import QtQuick

// Moves what scrolls: by keys, and as little as shows what is to be seen.
QtObject {
    id: scroller

    required property Flickable flickable
    // Seen above and below what is to be seen, where there is room.
    property int margin: 0
    readonly property real first: flickable.originY - flickable.topMargin
    readonly property real last: Math.max(first, flickable.originY + flickable.contentHeight + flickable.bottomMargin - flickable.height)

    function to(y) {
        flickable.contentY = Math.max(first, Math.min(last, y));
    }

    function by(distance) {
        to(flickable.contentY + distance);
    }

    // The whole of `item`, or its top when it is taller than what scrolls.
    function reveal(item) {
        const top = item.mapToItem(flickable.contentItem, 0, 0).y - margin;
        const bottom = top + item.height + 2 * margin;
        to(Math.min(top, Math.max(bottom - flickable.height, flickable.contentY)));
    }

    function takePageKey(event) {
        event.accepted = event.key === Qt.Key_PageUp || event.key === Qt.Key_PageDown;
        if (event.accepted)
            by(flickable.height * (event.key === Qt.Key_PageUp ? -0.9 : 0.9));
    }

    // Whether the keys have gone to an item that scrolls. What is being clicked must not
    // move away from under the pointer.
    function isReachedByKeys(item) {
        if (!item || item.focusReason === Qt.MouseFocusReason)
            return false;
        for (let above = item.parent; above; above = above.parent)
            if (above === flickable.contentItem)
                return true;
        return false;
    }
}
