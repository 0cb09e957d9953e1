pragma Singleton

import QtQuick

// The letters that press buttons together with Alt. They are underlined while that key is held.
QtObject {
    property bool areShown: false

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
            button.mnemonic = letters.find(letter => !taken.includes(letter)) ?? "";
            taken.push(button.mnemonic);
        }
    }
}
