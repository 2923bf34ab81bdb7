import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Brevanti

// The demo's home screen: the device's identifiers, and buttons to be asked for notifications, to
// open the notification settings and to sign in.
ApplicationWindow {
    id: window
    required property string user
    width: 375
    height: 667
    visible: true
    title: "Brevanti Demo"

    Component.onCompleted: BVTNotify.window = window

    StackView {
        id: stack
        anchors.fill: parent
        initialItem: Page {
            header: ToolBar {
                Label {
                    anchors.centerIn: parent
                    text: "Brevanti Demo"
                    font.bold: true
                    font.pixelSize: 17
                }
            }
            ColumnLayout {
                anchors.fill: parent
                anchors.margins: 20
                spacing: 6
                Repeater {
                    model: [["Device", Brevanti.deviceId, "not registered yet"],
                            ["User", Brevanti.user, "nobody signed in"],
                            ["Push token", Brevanti.pushToken, "none: push not enabled"]]
                    ColumnLayout {
                        required property var modelData
                        Layout.fillWidth: true
                        // The style's text colour, lighter for what is secondary: readable in
                        // every style, light or dark.
                        Label {
                            text: modelData[0]
                            opacity: 0.7
                            font.pixelSize: 12
                        }
                        Label {
                            Layout.fillWidth: true
                            text: modelData[1] || modelData[2]
                            opacity: modelData[1] ? 1 : 0.7
                            font.pixelSize: 15
                            wrapMode: Text.WrapAnywhere
                        }
                    }
                }
                Item { Layout.fillHeight: true }
                Button {
                    Layout.fillWidth: true
                    text: "Ask for notifications"
                    onClicked: BVTNotify.requestCustomPreferences()
                }
                Button {
                    Layout.fillWidth: true
                    text: "Notification settings"
                    onClicked: stack.push(settings)
                }
                Button {
                    Layout.fillWidth: true
                    text: "Sign in as " + window.user
                    onClicked: Brevanti.assignDeviceToUser(window.user)
                }
            }
        }
    }

    Component {
        id: settings
        Page {
            header: ToolBar {
                Label {
                    anchors.centerIn: parent
                    text: "Notifications"
                    font.bold: true
                    font.pixelSize: 17
                }
                ToolButton {
                    anchors.right: parent.right
                    text: "Done"
                    onClicked: stack.pop()
                }
            }
            PreferencesPage { anchors.fill: parent }
        }
    }
}
