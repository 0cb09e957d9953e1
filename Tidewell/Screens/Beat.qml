pragma Singleton

import QtQuick

// The one beat to which everything moves while something is computed. Where there is no
// graphics card each frame is drawn by the processor that computes: a dozen a second is
// enough to see that it goes on.
QtObject {
    id: beat

    readonly property int period: 80
    property int count: 0
    // How many things move at present, and how many panels darken the window.
    property int movers: 0
    property int shades: 0

    readonly property Timer timer: Timer {
        interval: beat.period
        repeat: true
        running: beat.movers > 0
        onTriggered: ++beat.count
    }
}
