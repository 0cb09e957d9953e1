import QtQuick
import Tidewell.Screens

// Turns while something goes on; stands still for those who want no motion.
Symbol {
    id: spinner

    name: "spinner"
    tint: Theme.accent

    RotationAnimator on rotation {
        from: 0
        to: 360
        duration: 900
        loops: Animation.Infinite
        running: spinner.visible && Theme.moves
    }
}
