import QtQuick
import Tidewell.Screens

// Turns while something goes on; stands still for those who want no motion.
Symbol {
    id: spinner

    name: "spinner"
    tint: Theme.accent
    rotation: 360 * Math.max(0, mover.phase)

    readonly property Mover mover: Mover {
        wanted: spinner.visible
    }
}
