import QtQuick
import Tidewell.Screens

// A text. Never markup: some of what is shown was written by other people.
Text {
    textFormat: Text.PlainText
    color: Theme.text
    font.pixelSize: Theme.body
    lineHeight: wrapMode === Text.NoWrap ? 1 : 1.15
    horizontalAlignment: Text.AlignLeft
    Accessible.role: Accessible.StaticText
    Accessible.name: text
    Accessible.ignored: text === ""
}
