import QtQuick
import Tidewell.Screens

// The step's one main action.
PlainButton {
    fill: down ? Theme.accentPressed : hovered ? Theme.accentHover : Theme.accent
    ink: Theme.accentInk
    edge: "transparent"
}
