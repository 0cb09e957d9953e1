import QtQuick
import QtQuick.Layouts
import Tidewell.Screens

// Our own folder chooser, for where the desktop has none. It chooses the folder that it
// shows, whatever is in that.
ModalPanel {
    id: chooser

    required property FolderPrompt folders
    readonly property folderChooserContent content: folders.content
    readonly property string path: content.path
    property bool isNaming: false

    function settle() {
        pathField.show(path);
        list.currentIndex = content.current;
        list.positionViewAtIndex(content.current, ListView.Contain);
        if (isNaming) {
            isNaming = false;
            list.reason = Qt.TabFocusReason;
            list.takeFocus();
        } else if (list.activeFocus) {
            list.takeFocus();
        }
    }

    function startNaming() {
        isNaming = true;
        nameField.clear();
        nameField.forceActiveFocus(Qt.TabFocusReason);
    }

    function stopNaming() {
        isNaming = false;
        folders.forgetNameFault();
        newFolderButton.forceActiveFocus(Qt.TabFocusReason);
    }

    function takeKey(event) {
        const isUp = event.key === Qt.Key_Backspace || (event.key === Qt.Key_Up && event.modifiers & Qt.AltModifier);
        event.accepted = isUp;
        if (!isUp || event.isAutoRepeat)
            return;
        list.reason = Qt.TabFocusReason;
        folders.goUp();
    }

    objectName: "folderChooser"
    title: folders.title
    description: folders.message
    width: Math.min(720, parent.width - 2 * Theme.wide)
    padding: Theme.medium
    onPathChanged: settle()
    onOpened: {
        isNaming = false;
        list.reason = Qt.TabFocusReason;
        list.takeFocus();
    }
    onEscaped: isNaming ? stopNaming() : folders.cancel()

    Words {
        Layout.fillWidth: true
        text: chooser.title
        font.pixelSize: Theme.heading
        font.weight: Font.DemiBold
        wrapMode: Text.Wrap
    }
    Words {
        Layout.fillWidth: true
        Layout.topMargin: -Theme.tight
        visible: text !== ""
        text: chooser.description
        font.pixelSize: Theme.caption
        color: Theme.quiet
        wrapMode: Text.Wrap
    }
    RowLayout {
        Layout.fillWidth: true
        Layout.fillHeight: true
        spacing: Theme.medium
        Keys.onPressed: event => chooser.takeKey(event)

        FolderRows {
            id: places

            objectName: "folderPlace"
            Layout.preferredWidth: Math.min(Math.round(Theme.body * 11), chooser.availableWidth * 0.3)
            Layout.fillHeight: true
            model: chooser.folders.placeRows
            symbols: chooser.content.placeSymbols
            marked: chooser.content.place
            onOpened: row => chooser.folders.goToPlace(row)
            Accessible.name: L10n.text("Places")
        }
        ColumnLayout {
            spacing: Theme.tight

            RowLayout {
                spacing: Theme.hair

                SymbolButton {
                    objectName: "folderUpButton"
                    symbol: "arrow.up"
                    text: L10n.text("To the folder above")
                    enabled: chooser.content.canGoUp
                    onClicked: chooser.folders.goUp()
                }
                PlainField {
                    id: pathField

                    property bool isEdited: false

                    // Its end, when it is too long: that is where one is.
                    function show(path) {
                        text = path;
                        cursorPosition = length;
                        isEdited = false;
                    }
                    function go() {
                        if (isEdited && text !== "")
                            chooser.folders.goTo(text);
                    }

                    objectName: "folderPathField"
                    Layout.fillWidth: true
                    onTextEdited: isEdited = true
                    onEditingFinished: go()
                    Accessible.name: L10n.text("Path of the folder")
                    Accessible.description: chooser.content.pathFault
                }
            }
            Words {
                objectName: "folderPathFault"
                Layout.fillWidth: true
                visible: text !== ""
                text: chooser.content.pathFault
                color: Theme.warning
                font.pixelSize: Theme.caption
                wrapMode: Text.Wrap
                Accessible.role: Accessible.AlertMessage
            }
            Rectangle {
                Layout.fillWidth: true
                Layout.fillHeight: true
                implicitHeight: Theme.body * 22
                color: "transparent"
                radius: Theme.controlRadius
                border.width: list.activeFocus && list.count === 0 ? Theme.focusWidth : 1
                border.color: list.activeFocus && list.count === 0 ? Theme.accent : Theme.line

                RowLayout {
                    id: heading

                    x: Theme.snug
                    y: Theme.tight
                    width: parent.width - 2 * x
                    height: Math.round(Theme.body * 1.7)
                    spacing: Theme.tight

                    Text {
                        objectName: "folderName"
                        Layout.fillWidth: true
                        text: chooser.content.name
                        textFormat: Text.PlainText
                        color: Theme.text
                        font.pixelSize: Theme.body
                        font.weight: Font.DemiBold
                        horizontalAlignment: Text.AlignLeft
                        maximumLineCount: 1
                        elide: Text.ElideMiddle
                        Accessible.role: Accessible.Heading
                        Accessible.name: text
                    }
                    Spinner {
                        id: spinner

                        size: 16
                        visible: false

                        // Most folders are read before anybody could see it.
                        readonly property Timer slow: Timer {
                            running: chooser.content.isReading
                            interval: 400
                            onTriggered: spinner.visible = true
                            onRunningChanged: if (running) spinner.visible = false
                        }
                        readonly property bool reads: chooser.content.isReading
                        onReadsChanged: if (!reads) visible = false
                    }
                }
                FolderRows {
                    id: list

                    objectName: "folderRow"
                    anchors.fill: parent
                    anchors.margins: Theme.hair
                    anchors.topMargin: heading.y + heading.height + Theme.hair
                    focus: true
                    model: chooser.folders.folderRows
                    rowNamed: (typed, current) => chooser.folders.rowNamed(typed, current)
                    onOpened: row => chooser.folders.enter(row)
                    note: chooser.content.note
                    Accessible.name: L10n.format("Folders in “%@”", [chooser.content.name])
                }
            }
        }
    }
    Words {
        objectName: "folderNameFault"
        Layout.fillWidth: true
        visible: text !== "" && chooser.isNaming
        text: chooser.content.nameFault
        color: Theme.warning
        font.pixelSize: Theme.caption
        wrapMode: Text.Wrap
        Accessible.role: Accessible.AlertMessage
    }
    RowLayout {
        visible: chooser.isNaming
        spacing: Theme.snug

        PlainField {
            id: nameField

            objectName: "newFolderField"
            Layout.fillWidth: true
            placeholderText: L10n.text("Name of the new folder")
            Keys.onReturnPressed: event => event.isAutoRepeat || createButton.press()
            Keys.onEnterPressed: event => event.isAutoRepeat || createButton.press()
            Accessible.name: placeholderText
            Accessible.description: chooser.content.nameFault
        }
        PlainButton {
            objectName: "dropNewFolderButton"
            text: L10n.text("Cancel")
            onClicked: chooser.stopNaming()
        }
        PrimaryButton {
            id: createButton

            function press() {
                if (enabled)
                    clicked();
            }

            objectName: "createFolderButton"
            text: L10n.text("Create")
            enabled: nameField.text !== "" && !chooser.content.isReading
            onClicked: chooser.folders.create(nameField.text)
        }
    }
    RowLayout {
        visible: !chooser.isNaming
        spacing: Theme.snug

        PlainButton {
            id: newFolderButton

            objectName: "newFolderButton"
            visible: chooser.folders.canCreateFolders
            text: L10n.text("New Folder")
            enabled: chooser.content.name !== ""
            onClicked: chooser.startNaming()
        }
        Item {
            Layout.fillWidth: true
        }
        PlainButton {
            objectName: "cancelFolderButton"
            text: L10n.text("Cancel")
            onClicked: chooser.folders.cancel()
        }
        PrimaryButton {
            objectName: "chooseFolderButton"
            text: chooser.folders.confirmButton
            enabled: chooser.content.name !== ""
            onClicked: {
                pathField.go();
                chooser.folders.choose();
            }
        }
    }
}
