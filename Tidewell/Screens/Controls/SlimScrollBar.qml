import QtQuick
import QtQuick.Templates as T
import Tidewell.Screens

// Seen whenever there is more than fits.
T.ScrollBar {
    id: bar

    implicitWidth: 12
    padding: 3
    minimumSize: 0.1
    policy: T.ScrollBar.AsNeeded
    visible: size < 1
    Accessible.ignored: true

    contentItem: Rectangle {
        radius: width / 2
        color: bar.pressed || bar.hovered ? Theme.quiet : Theme.border
        opacity: bar.pressed || bar.hovered ? 1 : 0.55
    }
}
