import QtQuick
import QtQuick.Layouts
import Tidewell.Screens

// Sentences about what may be missing, each with its sign.
ColumnLayout {
    id: list

    required property list<string> warnings

    spacing: Theme.snug
    visible: warnings.length > 0

    Repeater {
        model: list.warnings.length

        RowLayout {
            id: warning

            required property int index

            spacing: Theme.snug
            Layout.fillWidth: true

            Symbol {
                Layout.alignment: Qt.AlignTop
                name: "exclamationmark.triangle"
                tint: Theme.warning
                size: 26
            }
            Words {
                objectName: "warningText." + warning.index
                Layout.fillWidth: true
                text: list.warnings[warning.index]
                wrapMode: Text.Wrap
            }
        }
    }
}
