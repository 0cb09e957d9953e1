import QtQuick
import QtQuick.Layouts
import Tidewell.Screens

// A small label over its value.
ColumnLayout {
    id: fact

    required property string label
    // Not "value", which Qt takes for a slider's and tells assistive technology of.
    required property string detail
    // Of the width, in proportion to the facts beside it.
    property int share: 1

    spacing: 2
    Layout.fillWidth: true
    Layout.preferredWidth: 100 * share
    Accessible.role: Accessible.StaticText
    Accessible.name: label + ": " + detail

    Text {
        Layout.fillWidth: true
        text: fact.label
        textFormat: Text.PlainText
        color: Theme.quiet
        font.pixelSize: Theme.caption
        horizontalAlignment: Text.AlignLeft
        elide: Text.ElideRight
    }
    Text {
        Layout.fillWidth: true
        text: fact.detail
        textFormat: Text.PlainText
        color: Theme.text
        font.pixelSize: Theme.body
        font.weight: Font.Medium
        horizontalAlignment: Text.AlignLeft
        maximumLineCount: 1
        elide: Text.ElideMiddle
    }
}
