import QtQuick
import QtQuick.Layouts
import Tidewell.Screens

// Step 3: how far the export has come.
ScrollPage {
    id: view

    required property progressStepContent content

    centred: true

    Card {
        Layout.fillWidth: true
        padding: 32
        spacing: Theme.snug

        RowLayout {
            spacing: Theme.medium
            Layout.fillWidth: true

            Words {
                objectName: "progressTitle"
                Layout.fillWidth: true
                text: view.content.title
                font.pixelSize: Theme.title
                font.weight: Font.DemiBold
                elide: Text.ElideRight
                Accessible.role: Accessible.Heading
            }
            Words {
                objectName: "remaining"
                text: view.content.remaining
                color: Theme.quiet
            }
        }
        ProgressStripe {
            objectName: "progressBar"
            Layout.fillWidth: true
            Layout.topMargin: Theme.hair
            indeterminate: view.content.isIndeterminate
            value: view.content.fraction
            caption: view.content.title
            count: view.content.count
        }
        RowLayout {
            spacing: Theme.wide
            Layout.fillWidth: true

            Words {
                objectName: "currentFile"
                Layout.fillWidth: true
                text: view.content.fileName === "" ? " " : view.content.fileName
                color: Theme.quiet
                maximumLineCount: 1
                elide: Text.ElideMiddle
            }
            Words {
                objectName: "progressCount"
                text: view.content.count
                color: Theme.quiet
            }
        }
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
