import QtQuick
import QtQuick.Layouts
import Tidewell.Screens

// Step 3: how far the export has come.
ScrollPage {
    id: view

    required property progressStepContent content

    centred: true

    ProgressCard {
        Layout.fillWidth: true
        content: view.content
    }
    ColumnLayout {
        spacing: Theme.hair
        Layout.fillWidth: true
        Layout.topMargin: Theme.tight

        Repeater {
            model: [
                L10n.text("This can take a minute on a large backup."),
                L10n.text("You can leave this window open. Nothing in the iPhone backup is changed."),
            ]

            Words {
                required property string modelData

                Layout.fillWidth: true
                text: modelData
                color: Theme.quiet
                horizontalAlignment: Text.AlignHCenter
                wrapMode: Text.Wrap
            }
        }
    }
}
