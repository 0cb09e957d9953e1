import QtQuick
import QtQuick.Templates as T
import Tidewell.Screens

// Folders to go to, each with a symbol. Return or a click goes.
RowList {
    id: list

    // One for each row; "folder" without.
    property var symbols: []
    // The row that is where one is; -1: none.
    property int marked: -1
    signal opened(int row)

    property real clickedAt: 0

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

    // Rows that are made ahead would outlive a folder that has fewer.
    cacheBuffer: 0
    onKeyTaken: clickedAt = 0

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
