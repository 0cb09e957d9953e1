import QtQuick
import QtQuick.Templates as T
import Tidewell.Screens

// A progress bar from 0 to 1; while there is no figure, a piece of it wanders.
T.ProgressBar {
    id: bar

    property bool isAboveShade: false
    readonly property Mover mover: Mover {
        wanted: bar.indeterminate && bar.visible
        isAboveShade: bar.isAboveShade
        duration: 1440
    }

    function eased(phase) {
        return phase < 0.5 ? 2 * phase * phase : 1 - 2 * (1 - phase) * (1 - phase);
    }

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
        }
        Rectangle {
            id: wanderer

            height: parent.height
            width: parent.width * 0.3
            // In the middle as long as it does not move.
            x: bar.mover.phase < 0 ? (parent.width - width) / 2 : -width + (parent.width + width) * bar.eased(bar.mover.phase)
            radius: height / 2
            color: Theme.accent
            visible: bar.indeterminate
        }
    }
}
