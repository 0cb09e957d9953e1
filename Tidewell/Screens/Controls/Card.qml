import QtQuick
import QtQuick.Layouts
import Tidewell.Screens

// A surface that holds together what belongs together, one below the other.
Rectangle {
    id: card

    default property alias body: column.data
    property int padding: Theme.wide
    property alias spacing: column.spacing

    implicitHeight: column.implicitHeight + 2 * padding
    color: Theme.surface
    radius: Theme.cardRadius
    border.width: 1
    border.color: Theme.line

    ColumnLayout {
        id: column

        anchors.fill: parent
        anchors.margins: card.padding
        spacing: Theme.medium
    }
}
