import QtQuick
import QtQuick.Templates as T
import Tidewell.Screens

// A progress bar from 0 to 1; while there is no figure, a piece of it wanders.
T.ProgressBar {
    id: bar

    implicitHeight: 8

    background: Rectangle {
        radius: height / 2
        color: Theme.dark ? Theme.pressed : Theme.line
    }
    contentItem: Item {
        clip: true

        Rectangle {
            height: parent.height
            width: bar.visualPosition * parent.width
            radius: height / 2
            color: Theme.accent
            visible: !bar.indeterminate

            Behavior on width {
                NumberAnimation {
                    duration: Theme.quick
                }
            }
        }
        Rectangle {
            id: wanderer

            height: parent.height
            width: parent.width * 0.3
            x: (parent.width - width) / 2
            radius: height / 2
            color: Theme.accent
            visible: bar.indeterminate

            NumberAnimation on x {
                from: -wanderer.width
                to: bar.width
                duration: 1400
                easing.type: Easing.InOutQuad
                loops: Animation.Infinite
                running: bar.indeterminate && bar.visible && Theme.moves
            }
        }
    }
}
