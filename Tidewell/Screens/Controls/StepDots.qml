import QtQuick
import Tidewell.Screens

// How far the wizard has come, at a glance; the caption says the same in words.
Row {
    id: dots

    required property int step

    spacing: 6
    Accessible.ignored: true

    Repeater {
        model: 3

        Rectangle {
            required property int index

            width: index + 1 === dots.step ? 36 : 20
            height: 6
            radius: 3
            color: index < dots.step ? Theme.accent : Theme.unreached

            Behavior on width {
                NumberAnimation {
                    duration: Theme.calm
                    easing.type: Easing.OutCubic
                }
            }
        }
    }
}
