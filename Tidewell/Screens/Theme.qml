pragma Singleton

import QtQuick
import Tidewell.Screens

// Sizes, colours and durations of all screens. Lengths are in device-independent
// pixels; text grows with the font size that the user's desktop asks for.
QtObject {
    readonly property bool dark: Appearance.isDark

    // Spacing
    readonly property int hair: 4
    readonly property int tight: 8
    readonly property int snug: 12
    readonly property int medium: 16
    readonly property int wide: 24

    // Text
    readonly property int body: Math.max(14, Qt.application.font.pixelSize)
    readonly property int caption: Math.round(body * 0.9)
    readonly property int heading: Math.round(body * 1.14)
    readonly property int title: Math.round(body * 1.3)
    readonly property int display: Math.round(body * 1.7)

    // Shapes
    readonly property int columnWidth: 680
    readonly property int controlHeight: Math.round(body * 2.6)
    readonly property int controlRadius: 8
    readonly property int cardRadius: 12
    readonly property int symbolSize: 24
    readonly property int focusWidth: 2

    // Colours; every text colour has at least 4.5:1 against the surfaces that it stands on.
    readonly property color window: dark ? "#12181c" : "#f3f6f7"
    readonly property color surface: dark ? "#1b2329" : "#ffffff"
    readonly property color hover: dark ? "#222c33" : "#f5f8f9"
    readonly property color pressed: dark ? "#2a353d" : "#eaeff1"
    readonly property color line: dark ? "#2b363d" : "#dde3e6"
    readonly property color unreached: dark ? "#3a474f" : "#cbd4d8"
    readonly property color border: dark ? "#71818b" : "#7f8c96"
    readonly property color text: dark ? "#e8eef1" : "#15202b"
    readonly property color quiet: dark ? "#a0b0ba" : "#566470"
    readonly property color accent: dark ? "#4fd0b5" : "#0a7565"
    readonly property color accentHover: dark ? "#6adcc4" : "#086657"
    readonly property color accentPressed: dark ? "#3dbba1" : "#065548"
    readonly property color accentSoft: dark ? "#17352f" : "#e1f3ee"
    readonly property color accentInk: dark ? "#06231d" : "#ffffff"
    readonly property color warning: dark ? "#ffb27d" : "#96470a"
    readonly property color shade: dark ? "#b0000000" : "#66101a22"

    // Milliseconds; nothing moves for those who asked for that.
    readonly property int quick: Appearance.reducesMotion ? 0 : 120
    readonly property int calm: Appearance.reducesMotion ? 0 : 220
    readonly property bool moves: !Appearance.reducesMotion
}
