import QtQuick
import QtQuick.Controls
import Brevanti

// The preferences screen as a page titled "Notifications": the user's preferences under their
// categories' headers, one switch each, the widget screen's look. Every appearance fetches the
// document again and shows it in place of the one before; while it comes a busy indicator turns,
// a fetch that fails (or gets no access token) shows why with a button to try again, and a
// document without preferences says so.
Page {
    id: page

    readonly property PreferencesModel model: preferences
    readonly property color cellTextColor: Qt.rgba(0.26, 0.26, 0.26, 1)
    readonly property color switchOnTint: Qt.rgba(0.6, 0.85, 0.38, 1)
    readonly property color headerBackground: Qt.rgba(0.98, 0.98, 0.98, 1)
    readonly property color headerTextColor: Qt.rgba(0.64, 0.64, 0.64, 1)
    readonly property color hairlineColor: Qt.rgba(0.87, 0.87, 0.87, 1)
    readonly property int rowHeight: 60
    readonly property int headerHeight: 50

    title: qsTr("Notifications")
    Component.onCompleted: if (visible) preferences.load()
    onVisibleChanged: if (visible) preferences.load()

    PreferencesModel {
        id: preferences
        replacesOnLoad: true
    }

    background: Rectangle {
        color: "white"
    }

    ListView {
        id: list
        anchors.fill: parent
        clip: true
        model: preferences
        section.property: "categoryName"
        section.delegate: Rectangle {
            required property string section
            width: ListView.view.width
            height: page.headerHeight
            color: page.headerBackground
            Label {
                x: 15
                y: 24
                height: 16
                text: parent.section
                font.bold: true
                font.pixelSize: 14
                color: page.headerTextColor
                verticalAlignment: Text.AlignVCenter
            }
            Rectangle {
                anchors.bottom: parent.bottom
                width: parent.width
                height: 1 // a hairline: thinner, the software renderer draws nothing
                color: page.hairlineColor
            }
        }
        delegate: Rectangle {
            id: row
            width: ListView.view.width
            height: page.rowHeight
            color: "white"
            Label {
                x: 15
                width: 220
                height: parent.height
                text: model.preferenceName
                font.bold: true
                font.pixelSize: 14
                color: page.cellTextColor
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
                indicator: Rectangle {
                    implicitWidth: 51
                    implicitHeight: 31
                    radius: height / 2
                    color: toggle.checked ? page.switchOnTint : "white"
                    border.color: toggle.checked ? page.switchOnTint : page.hairlineColor
                    border.width: 1.5
                    Rectangle {
                        x: toggle.checked ? parent.width - width - 2 : 2
                        anchors.verticalCenter: parent.verticalCenter
                        width: 27
                        height: 27
                        radius: width / 2
                        color: "white"
                        border.color: page.hairlineColor
                    }
                }
            }
            // None under a section's last row.
            Rectangle {
                visible: row.ListView.nextSection === row.ListView.section
                x: 15
                anchors.bottom: parent.bottom
                width: parent.width - x
                height: 1
                color: page.hairlineColor
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
            color: page.cellTextColor
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
