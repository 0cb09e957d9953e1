import QtQuick
import QtQuick.Layouts
import QtQuick.Templates as T
import Tidewell.Screens

// A check box with its text. It shows what it is told to show: a click asks for
// the opposite and changes nothing by itself.
T.CheckBox {
    id: box

    // Between mark and text; none when empty.
    property string symbol
    property string caption
    property string trailing
    property int sidePadding: 0
    // Of the text; 0: as many as it needs.
    property int mostLines: 0
    signal wanted(bool on)

    nextCheckState: () => checkState
    onClicked: wanted(!checked)
    implicitWidth: implicitContentWidth + leftPadding + rightPadding
    implicitHeight: implicitContentHeight + 2 * Theme.tight
    leftPadding: sidePadding
    rightPadding: sidePadding
    hoverEnabled: true
    focusPolicy: Qt.StrongFocus
    opacity: enabled ? 1 : 0.45
    Accessible.name: text
    Accessible.description: caption
    Accessible.onToggleAction: clicked()
    Accessible.onPressAction: clicked()

    background: Rectangle {
        radius: Theme.controlRadius
        color: box.hovered ? Theme.hover : "transparent"
        visible: box.sidePadding > 0

        FocusRing {
            shown: box.visualFocus
            anchors.margins: -1
            around: Theme.controlRadius - 1
        }
    }
    contentItem: RowLayout {
        spacing: Theme.snug

        Rectangle {
            implicitWidth: 20
            implicitHeight: 20
            radius: 5
            color: box.checked ? Theme.accent : Theme.surface
            border.width: box.checked ? 0 : 1.5
            border.color: Theme.border

            Symbol {
                anchors.centerIn: parent
                name: "checkmark"
                tint: Theme.accentInk
                size: 16
                visible: box.checked
            }
            FocusRing {
                shown: box.visualFocus && box.sidePadding === 0
                around: 5
            }
        }
        Symbol {
            name: box.symbol
            size: 22
            visible: box.symbol !== ""
        }
        ColumnLayout {
            spacing: 2
            Layout.fillWidth: true

            Text {
                Layout.fillWidth: true
                text: box.text
                textFormat: Text.PlainText
                color: Theme.text
                font.pixelSize: Theme.body
                horizontalAlignment: Text.AlignLeft
                wrapMode: Text.Wrap
                elide: box.mostLines > 0 ? Text.ElideRight : Text.ElideNone
                maximumLineCount: box.mostLines > 0 ? box.mostLines : 1000
            }
            Text {
                Layout.fillWidth: true
                text: box.caption
                textFormat: Text.PlainText
                color: Theme.quiet
                font.pixelSize: Theme.caption
                horizontalAlignment: Text.AlignLeft
                wrapMode: Text.Wrap
                visible: text !== ""
            }
        }
        Text {
            text: box.trailing
            textFormat: Text.PlainText
            color: Theme.quiet
            font.pixelSize: Theme.body
            visible: text !== ""
        }
    }
}
