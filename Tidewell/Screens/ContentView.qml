import QtQuick
import QtQuick.Layouts
import Tidewell.Screens

// The window's content: header, the current step, footer, and what lies over them.
FocusScope {
    id: view

    required property WizardScreens screens
    readonly property ExportViewModel controller: screens.controller
    readonly property windowContent content: screens.window
    readonly property int step: content.step

    // A key that is held must not run through the steps.
    function press(button, event) {
        if (button && button.enabled && !event.isAutoRepeat)
            button.clicked();
    }

    LayoutMirroring.enabled: Qt.application.layoutDirection === Qt.RightToLeft
    LayoutMirroring.childrenInherit: true
    onStepChanged: footerGuard.start()
    Keys.onPressed: event => Mnemonics.watch(event, true)
    Keys.onReleased: event => Mnemonics.watch(event, false)
    Keys.onReturnPressed: event => press(footer.item.defaultButton, event)
    Keys.onEnterPressed: event => press(footer.item.defaultButton, event)
    Keys.onEscapePressed: event => event.isAutoRepeat || footer.item.escaped()

    Backdrop {
        anchors.fill: parent
        caption: view.content.stepCaption
        covered: Beat.shades > 0
        Accessible.role: Accessible.Client

        ColumnLayout {
            anchors.fill: parent
            spacing: 0

            StepHeader {
                Layout.fillWidth: true
                step: view.content.step
                caption: view.content.stepCaption
            }
            Loader {
                id: page

                objectName: "page"
                Layout.fillWidth: true
                Layout.fillHeight: true
                focus: true
                sourceComponent: [backupPage, optionsPage, progressPage, donePage][view.content.step - 1]
                onLoaded: {
                    focus = true;
                    appear.restart();
                }

                NumberAnimation {
                    id: appear

                    target: page.item
                    property: "opacity"
                    from: 0
                    to: 1
                    duration: Theme.calm
                    easing.type: Easing.OutCubic
                }
            }
            Rectangle {
                Layout.fillWidth: true
                implicitHeight: Theme.controlHeight + 2 * Theme.medium
                color: Theme.surface

                Rectangle {
                    width: parent.width
                    height: 1
                    color: Theme.line
                }
                Loader {
                    id: footer

                    anchors.fill: parent
                    anchors.leftMargin: Theme.wide
                    anchors.rightMargin: Theme.wide
                    sourceComponent: [backupFooter, optionsFooter, progressFooter, doneFooter][view.content.step - 1]
                }
                // The second click of a double one must not press what the first one brought.
                ClickGuard {
                    id: footerGuard

                    objectName: "footerGuard"
                    anchors.fill: parent
                }
            }
        }
    }
    Announcer {
        text: view.screens.progressStep.announcement
    }
    Announcer {
        text: view.screens.doneStep.verdict
    }

    Component {
        id: backupPage

        BackupStepView {
            focus: true
            content: view.screens.backupStep
            backups: view.screens.backupRows
            controller: view.controller
            mayTakeFocus: !view.content.hasError && !view.content.isUnlocking
        }
    }
    Component {
        id: optionsPage

        OptionsStepView {
            focus: true
            content: view.screens.optionsStep
            controller: view.controller
        }
    }
    Component {
        id: progressPage

        ProgressStepView {
            focus: true
            content: view.screens.progressStep
        }
    }
    Component {
        id: donePage

        DoneStepView {
            focus: true
            content: view.screens.doneStep
            progress: view.screens.progressStep
            onTryAgain: view.controller.tryAgain()
            onVerify: view.controller.verify()
            onCancelVerification: view.controller.cancelVerification()
        }
    }

    Component {
        id: backupFooter

        StepFooter {
            busyText: view.content.busyText
            defaultButton: continueButton

            PlainButton {
                objectName: "chooseOtherButton"
                text: L10n.text("Choose other folder…")
                onClicked: view.controller.chooseBackup()
            }
            PrimaryButton {
                id: continueButton

                objectName: "continueButton"
                text: L10n.text("Continue")
                enabled: view.content.canContinue
                Accessible.description: view.content.continueHint
                onClicked: view.controller.continueToOptions()
            }
        }
    }
    Component {
        id: optionsFooter

        StepFooter {
            hint: view.content.hint
            hintIsLink: view.content.hintOpensFolderPicker
            onHintClicked: view.controller.chooseDestination()
            defaultButton: startButton
            onEscaped: backButton.clicked()

            PlainButton {
                id: backButton

                objectName: "backButton"
                text: L10n.text("Back")
                onClicked: view.controller.goBackToBackup()
            }
            PrimaryButton {
                id: startButton

                objectName: "startExportButton"
                text: L10n.text("Start Export")
                enabled: view.content.canExport
                Accessible.description: view.content.hint
                onClicked: view.controller.startExport()
            }
        }
    }
    Component {
        id: progressFooter

        StepFooter {
            // Pressed more easily than meant.
            onEscaped: view.controller.askToCancelExport()

            PlainButton {
                objectName: "cancelExportButton"
                text: L10n.text("Cancel")
                onClicked: view.controller.cancelExport()
            }
        }
    }
    Component {
        id: doneFooter

        StepFooter {
            defaultButton: openButton.visible ? openButton : showButton
            onEscaped: view.controller.cancelVerification()

            PlainButton {
                objectName: "exportAnotherButton"
                text: L10n.text("Export another backup")
                onClicked: view.controller.exportAnother()
            }
            PlainButton {
                id: showButton

                objectName: "showInFinderButton"
                text: L10n.text("Show in Finder")
                onClicked: view.controller.revealDestination()
            }
            PrimaryButton {
                id: openButton

                objectName: "openArchiveButton"
                text: L10n.text("Open Chat Archive")
                visible: view.content.canOpenArchive
                onClicked: view.controller.openArchive()
            }
        }
    }

    FolderDrop {
        anchors.fill: parent
        targeted: view.content.dropTargeted
        onTargetedWanted: wanted => view.controller.setDropTargeted(wanted)
        onFolderDropped: url => view.controller.dropFolder(url)
    }
    ChatChooser {
        visible: content.isListShown
        content: view.screens.optionsStep.chatChoice
        chats: view.screens.chatRows
        controller: view.controller
    }
    UnlockProgressSheet {
        visible: view.content.isUnlocking
        isStopping: view.content.isCancellingUnlock
        onCancel: view.controller.cancelUnlock()
    }
    StopExportAlert {
        visible: view.content.asksToStop
        onKeepGoing: view.controller.keepExporting()
        onStop: view.controller.stopExporting()
    }
    UnopenedAlert {
        visible: view.content.unopenedPath !== ""
        path: view.content.unopenedPath
        onDismissed: view.controller.dismissUnopenedPath()
    }
    ErrorAlert {
        visible: view.content.hasError
        message: view.content.errorText
        offersSamePerson: view.content.offersSamePerson
        onSamePerson: view.controller.exportAsSamePerson()
        onDismissed: view.controller.dismissError()
    }
}
