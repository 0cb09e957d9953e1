import QtQuick
import QtQuick.Templates as T
import Tidewell.Screens

// A button; Return presses it too while it has the focus.
T.Button {
    id: button

    property color fill: down ? Theme.pressed : hovered ? Theme.hover : Theme.surface
    property color ink: Theme.text
    property color edge: Theme.border
    // Presses it together with Alt; one of the letters of its text, or none.
    property string mnemonic

    function pressByKey(event) {
        if (!event.isAutoRepeat)
            clicked();
    }

    implicitWidth: Math.max(implicitContentWidth + leftPadding + rightPadding, 88)
    implicitHeight: Math.max(Theme.controlHeight, implicitContentHeight + 2 * Theme.tight)
    leftPadding: Theme.medium
    rightPadding: Theme.medium
    hoverEnabled: true
    focusPolicy: Qt.StrongFocus
    opacity: enabled ? 1 : 0.45
    Accessible.name: text
    Accessible.onPressAction: clicked()
    Keys.onReturnPressed: event => pressByKey(event)
    Keys.onEnterPressed: event => pressByKey(event)

    background: Rectangle {
        color: button.fill
        radius: Theme.controlRadius
        border.width: button.edge.a > 0 ? 1 : 0
        border.color: button.edge

        Behavior on color {
            ColorAnimation {
                duration: Theme.quick
            }
        }

        FocusRing {
            shown: button.visualFocus
        }
    }
    Shortcut {
        sequence: button.mnemonic === "" ? "" : "Alt+" + button.mnemonic
        // Nothing behind a panel is pressed.
        enabled: button.enabled && button.visible && Beat.shades === 0
        autoRepeat: false
        onActivated: button.clicked()
    }
    contentItem: Text {
        id: label

        text: button.text
        textFormat: Text.PlainText
        color: button.ink
        font.pixelSize: Theme.body
        font.weight: Font.Medium
        elide: Text.ElideRight
        horizontalAlignment: Text.AlignHCenter
        verticalAlignment: Text.AlignVCenter

        Rectangle {
            readonly property int place: button.text.toLowerCase().indexOf(button.mnemonic)

            visible: Mnemonics.areShown && button.mnemonic !== ""
            x: (label.width - label.contentWidth) / 2 + before.advanceWidth
            y: (label.height + label.contentHeight) / 2 - 2
            width: letter.advanceWidth
            height: 1
            color: button.ink

            TextMetrics {
                id: before

                font: label.font
                text: button.text.substring(0, parent.place)
            }
            TextMetrics {
                id: letter

                font: label.font
                text: button.text.charAt(parent.place)
            }
        }
    }
}
