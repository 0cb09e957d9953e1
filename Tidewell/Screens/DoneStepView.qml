import QtQuick
import QtQuick.Layouts
import Tidewell.Screens

// What the export brought, and where it is.
ScrollPage {
    id: view

    required property doneStepContent content
    required property progressStepContent progress
    signal tryAgain()
    signal verify()
    signal cancelVerification()

    centred: true

    Symbol {
        Layout.alignment: Qt.AlignHCenter
        name: view.content.hasFailures ? "exclamationmark.triangle" : "checkmark.circle.fill"
        tint: view.content.hasFailures ? Theme.warning : Theme.accent
        size: 64
    }
    Words {
        objectName: "doneTitle"
        Layout.fillWidth: true
        text: L10n.text("Export finished")
        font.pixelSize: Theme.display
        font.weight: Font.DemiBold
        horizontalAlignment: Text.AlignHCenter
        wrapMode: Text.Wrap
        Accessible.role: Accessible.Heading
    }
    Words {
        objectName: "failureHeadline"
        Layout.fillWidth: true
        visible: text !== ""
        text: view.content.headline
        color: Theme.warning
        font.weight: Font.Medium
        horizontalAlignment: Text.AlignHCenter
        wrapMode: Text.Wrap
    }
    ProgressCard {
        Layout.fillWidth: true
        Layout.topMargin: Theme.tight
        padding: Theme.medium
        visible: view.content.isVerifying
        content: view.progress
        onVisibleChanged: if (visible) view.reveal(this)

        PlainButton {
            objectName: "cancelVerificationButton"
            Layout.alignment: Qt.AlignRight
            text: L10n.text("Cancel")
            onClicked: view.cancelVerification()
        }
    }
    Card {
        Layout.fillWidth: true
        Layout.topMargin: Theme.tight
        padding: Theme.medium
        visible: view.content.verdict !== "" && view.content.findings.length === 0
        onVisibleChanged: if (visible) view.reveal(this)

        RowLayout {
            spacing: Theme.snug
            Layout.fillWidth: true

            Symbol {
                name: "checkmark.circle.fill"
                tint: Theme.accent
                size: 26
            }
            Words {
                objectName: "verdict"
                Layout.fillWidth: true
                text: view.content.verdict
                wrapMode: Text.Wrap
            }
        }
    }
    FindingList {
        Layout.fillWidth: true
        Layout.topMargin: Theme.tight
        visible: view.content.findings.length > 0
        content: view.content
        onExportAgain: view.tryAgain()
        onVisibleChanged: if (visible) view.reveal(this)
    }
    Words {
        objectName: "doneHint"
        Layout.fillWidth: true
        visible: view.content.hasArchive
        text: L10n.text("Open the Chat Archive to read conversations in a browser, or show the folder in Finder.")
        color: Theme.quiet
        horizontalAlignment: Text.AlignHCenter
        wrapMode: Text.Wrap
    }
    Card {
        Layout.fillWidth: true
        Layout.topMargin: Theme.tight
        padding: Theme.medium
        spacing: Theme.snug

        RowLayout {
            spacing: Theme.snug
            Layout.fillWidth: true

            Symbol {
                name: "folder"
                tint: Theme.accent
                size: 26
            }
            Fact {
                objectName: "savedToFact"
                label: L10n.text("Saved to")
                detail: view.content.destination
            }
        }
        Rectangle {
            Layout.fillWidth: true
            implicitHeight: 1
            color: Theme.line
        }
        RowLayout {
            spacing: Theme.snug
            Layout.fillWidth: true

            Symbol {
                name: view.content.hasFailures ? "exclamationmark.triangle" : "tray"
                tint: view.content.hasFailures ? Theme.warning : Theme.accent
                size: 26
            }
            Words {
                objectName: "summaryText"
                Layout.fillWidth: true
                text: view.content.summary
                wrapMode: Text.Wrap
            }
            PlainButton {
                objectName: "verifyButton"
                text: L10n.text("Verify")
                enabled: view.content.canVerify
                onClicked: view.verify()
            }
        }
        WarningList {
            Layout.fillWidth: true
            warnings: view.content.warnings
        }
    }
    FailureList {
        Layout.fillWidth: true
        visible: view.content.failures.length > 0
        content: view.content
        onTryAgain: view.tryAgain()
    }
}
