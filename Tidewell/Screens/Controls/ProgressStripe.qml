import QtQuick
import QtQuick.Templates as T
import Tidewell.Screens

// A progress bar from 0 to 1; while there is no figure, a piece of it wanders.
T.ProgressBar {
    id: bar

    property bool isAboveShade: false
    // What goes on, and how much of it is done, for assistive technology (ProgressAccess).
    required property string caption
    property string count
    readonly property Mover mover: Mover {
        wanted: bar.indeterminate && bar.visible
        isAboveShade: bar.isAboveShade
        duration: 1440
    }

    function eased(phase) {
        return phase < 0.5 ? 2 * phase * phase : 1 - 2 * (1 - phase) * (1 - phase);
    }

    implicitHeight: 8
    Accessible.role: Accessible.ProgressBar

    background: Rectangle {
        radius: height / 2
        color: Theme.dark ? Theme.pressed : Theme.line
    }
    contentItem: Item {
        clip: true

        Rectangle {
            height: parent.height
            x: bar.mirrored ? parent.width - width : 0
            width: bar.position * parent.width
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
