pragma Singleton

import QtQuick

// The letters that press buttons together with Alt. They are underlined while that key is held.
QtObject {
    id: mnemonics

    property bool areShown: false
    // On macOS the same key types letters.
    readonly property bool areOffered: Qt.platform.os !== "osx"
    // The key may be let go elsewhere.
    readonly property Connections leaving: Connections {
        target: Qt.application
        function onStateChanged() {
            mnemonics.areShown = false;
        }
    }

    function watch(event, isDown) {
        if (event.key === Qt.Key_Alt)
            areShown = isDown;
        event.accepted = false;
    }

    // Gives each button the first letter of its text that no button before it has.
    function assign(buttons) {
        const taken = [];
        for (const button of buttons) {
            const letters = Array.from(button.text.toLowerCase()).filter(letter => /[a-z0-9]/.test(letter));
            button.mnemonic = areOffered && letters.find(letter => !taken.includes(letter)) || "";
            taken.push(button.mnemonic);
        }
    }
}
