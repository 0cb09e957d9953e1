import QtQuick
import QtQuick.Layouts
import QtQuick.Templates as T
import Tidewell.Screens

// One backup of the list, and whether it is the chosen one.
T.RadioButton {
    id: row

    required property backupRowContent backup
    required property bool selected
    // What asks for its password stands beneath it and waits.
    required property bool opensField
    signal chosenByKey()

    autoExclusive: false
    checked: selected
    // A click chooses nothing by itself.
    onClicked: checked = Qt.binding(() => selected)

    // On the chosen row, Return goes on to the step's own button once that can be pressed.
    function chooseByKey(event) {
        event.accepted = !selected || opensField;
        if (event.accepted && !event.isAutoRepeat)
            chosenByKey();
    }

    implicitHeight: content.implicitHeight + 2 * padding
    padding: Theme.medium
    hoverEnabled: true
    focusPolicy: Qt.StrongFocus
    Accessible.name: [backup.name, backup.detail, backup.note].filter(part => part !== "").join(", ")
    Accessible.selectable: true
    Accessible.selected: selected
    Accessible.onPressAction: clicked()
    Accessible.onToggleAction: clicked()
    Keys.onReturnPressed: event => chooseByKey(event)
    Keys.onEnterPressed: event => chooseByKey(event)

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
                    horizontalAlignment: Text.AlignLeft
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
