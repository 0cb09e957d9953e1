import QtQuick
import Tidewell.Screens

// A phase that goes from 0 to 1 again and again, for what moves while something is
// computed. Nothing moves under a shade, nor for those who want no motion.
QtObject {
    id: mover

    required property bool wanted
    property bool isAboveShade: false
    // Of one round, in milliseconds.
    property int duration: 900
    property real phase: -1 // until it has moved
    readonly property bool runs: wanted && Theme.moves && (isAboveShade || Beat.shades === 0)
    property bool isCounted: false

    function count(moves) {
        if (moves === isCounted)
            return;
        isCounted = moves;
        Beat.movers += moves ? 1 : -1;
    }

    onRunsChanged: count(runs)
    Component.onCompleted: count(runs)
    Component.onDestruction: count(false)

    readonly property Connections beat: Connections {
        target: Beat
        enabled: mover.runs
        function onCountChanged() {
            mover.phase = (Beat.count * Beat.period % mover.duration) / mover.duration;
        }
    }
}
