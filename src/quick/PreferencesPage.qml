import QtQuick
import QtQuick.Controls
import Brevanti

/// The preferences screen as a Qt Quick Controls Page titled "Notifications" (translated in the
/// context PreferencesPage): the preferences under their categories' headers, one switch each,
/// whose flip goes to the service at once. Each time it becomes visible it fetches the document
/// again and shows it in place of the one before; while it comes a busy indicator turns, a fetch
/// that fails (or gets no access token) says so with a Try Again button, and a document without
/// preferences says that. Its colours are the style's.
Page {
    id: page

    /// The page's list: its loading, errorString and rows, for a host that shows more of them.
    readonly property PreferencesModel model: preferences

    QtObject {
        id: metrics

        readonly property int rowHeight: 60
        readonly property int headerHeight: 50
    }

    title: qsTr("Notifications")
    Component.onCompleted: if (visible) preferences.load()
    onVisibleChanged: if (visible) preferences.load()

    PreferencesModel {
        id: preferences
        replacesOnLoad: true
    }

    ListView {
        id: list
        anchors.fill: parent
        clip: true
        model: preferences
        section.property: "categoryName"
        section.delegate: Item {
            required property string section
            width: ListView.view.width
            height: metrics.headerHeight
            Label {
                x: 15
                y: 24
                height: 16
                text: parent.section
                font.bold: true
                font.pixelSize: 14
                verticalAlignment: Text.AlignVCenter
            }
            Rectangle {
                anchors.bottom: parent.bottom
                width: parent.width
                height: 1 // a hairline: thinner, the software renderer draws nothing
                color: page.palette.mid
            }
        }
        delegate: Item {
            id: row
            width: ListView.view.width
            height: metrics.rowHeight
            Label {
                x: 15
                width: 220
                height: parent.height
                text: model.preferenceName
                font.bold: true
                font.pixelSize: 14
                verticalAlignment: Text.AlignVCenter
                elide: Text.ElideRight
            }
            Switch {
                id: toggle
                anchors.right: parent.right
                anchors.rightMargin: 15
                anchors.verticalCenter: parent.verticalCenter
                padding: 0
                checked: model.enabled
                Accessible.name: model.preferenceName
                onToggled: preferences.setEnabled(index, checked)
            }
            // None under a section's last row.
            Rectangle {
                visible: row.ListView.nextSection === row.ListView.section
                x: 15
                anchors.bottom: parent.bottom
                width: parent.width - x
                height: 1
                color: page.palette.mid
            }
        }
    }

    BusyIndicator {
        running: preferences.loading
        visible: running
        x: (page.width - width) / 2
        y: 62 - height / 2
    }

    Column {
        objectName: "preferencesMessage"
        visible: !preferences.loading && list.count === 0
        anchors.centerIn: parent
        width: parent.width - 40
        spacing: 12
        Label {
            width: parent.width
            horizontalAlignment: Text.AlignHCenter
            wrapMode: Text.Wrap
            text: preferences.errorString !== ""
                  ? qsTr("The notification settings could not be loaded.")
                  : qsTr("There are no notification settings.")
        }
        Button {
            visible: preferences.errorString !== ""
            anchors.horizontalCenter: parent.horizontalCenter
            text: qsTr("Try Again")
            onClicked: preferences.load()
        }
    }
}
