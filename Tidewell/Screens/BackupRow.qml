import QtQuick
import QtQuick.Layouts
import QtQuick.Templates as T
import Tidewell.Screens

// One backup of the list, and whether it is the chosen one.
T.AbstractButton {
    id: row

    required property backupRowContent backup
    required property bool selected

    implicitHeight: content.implicitHeight + 2 * padding
    padding: Theme.medium
    hoverEnabled: true
    focusPolicy: Qt.StrongFocus
    Accessible.role: Accessible.RadioButton
    Accessible.name: [backup.name, backup.detail, backup.note].filter(part => part !== "").join(", ")
    Accessible.checkable: true
    Accessible.checked: selected
    Accessible.selectable: true
    Accessible.selected: selected
    Accessible.onPressAction: click()
    Accessible.onToggleAction: click()
    // On the chosen row, Return goes on to the step's own button.
    Keys.onReturnPressed: event => {
        event.accepted = !selected;
        if (!selected)
            click();
    }
    Keys.onEnterPressed: event => {
        event.accepted = !selected;
        if (!selected)
            click();
    }

    background: Rectangle {
        radius: Theme.cardRadius
        color: row.selected ? Theme.accentSoft : row.down ? Theme.pressed : row.hovered ? Theme.hover : Theme.surface
        border.width: row.selected ? 2 : 1
        border.color: row.selected ? Theme.accent : Theme.line

        FocusRing {
            shown: row.visualFocus
            around: Theme.cardRadius
        }
    }
    contentItem: RowLayout {
        id: content

        spacing: Theme.medium

        Symbol {
            name: "iphone"
            tint: row.selected ? Theme.accent : Theme.quiet
            size: 32
        }
        ColumnLayout {
            spacing: 3
            Layout.fillWidth: true

            Text {
                objectName: "name"
                Layout.fillWidth: true
                text: row.backup.name
                textFormat: Text.PlainText
                color: Theme.text
                font.pixelSize: Theme.heading
                font.weight: Font.DemiBold
                horizontalAlignment: Text.AlignLeft
                maximumLineCount: 1
                elide: Text.ElideMiddle
            }
            Text {
                objectName: "detail"
                Layout.fillWidth: true
                text: row.backup.detail
                textFormat: Text.PlainText
                color: Theme.quiet
                font.pixelSize: Theme.body
                horizontalAlignment: Text.AlignLeft
                elide: Text.ElideRight
            }
            RowLayout {
                spacing: 6
                visible: row.backup.note !== ""

                Symbol {
                    name: "lock.fill"
                    size: 14
                }
                Text {
                    objectName: "note"
                    Layout.fillWidth: true
                    text: row.backup.note
                    textFormat: Text.PlainText
                    color: Theme.quiet
                    font.pixelSize: Theme.caption
                    elide: Text.ElideRight
                }
            }
        }
        Symbol {
            name: "checkmark.circle.fill"
            tint: Theme.accent
            size: 26
            opacity: row.selected ? 1 : 0
        }
    }
}
