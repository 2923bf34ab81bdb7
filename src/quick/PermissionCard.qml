import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Brevanti

/// The permission card, a modal Popup over the dimmed window of its parent (the window's
/// overlay): a mark in the tint colour, the header and sub-header, and three buttons. Keep Me
/// Updated closes it and asks for push permission once it has gone; Customize Notifications shows
/// a PreferencesPage inside it under a bar whose Done closes it; No Thanks closes it. Each close
/// emits ended() and brings it back to its buttons, so that a host can embed it and open it again.
/// Its colours are the style's (Basic, Fusion, Material, Universal, light or dark) but for the
/// tint, color: a text on the tint takes whichever of the style's background and text colours
/// reads better on it, and a tinted text that would not read on the card takes the style's text
/// colour. Its texts are translated in the context PermissionCard, the bar's in the context
/// PreferencesPage.
Popup {
    id: card

    /// The tint: the mark, the Keep Me Updated button, the bar; BVTNotify's default unless set.
    property color color: BVTNotify.defaultNotificationColor
    /// The icon the host passed, kept for the host: the card draws its mark in the tint colour.
    property var icon
    /// The header under the mark; BVTNotify's default unless set.
    property string header: BVTNotify.defaultNotificationHeader
    /// The text under the header; BVTNotify's default unless set.
    property string subHeader: BVTNotify.defaultNotificationSubHeader
    /// Whether the card shows the preferences (after Customize Notifications) instead of its
    /// buttons; false again whenever it closes.
    property bool customizing: false
    /// The milliseconds between Keep Me Updated closing the card and the request for push
    /// permission, so that the card has gone before the system asks.
    readonly property int permissionDelay: 100

    /// The card ended, with how: Brevanti.CardKeptUpdated, Brevanti.CardCustomized (Customize
    /// Notifications, then Done) or Brevanti.CardDeclined (No Thanks).
    signal ended(int outcome)

    onClosed: customizing = false

    // What only the card reads: its measures, and its colours worked out from the style's.
    QtObject {
        id: look

        readonly property bool landscape: card.parent ? card.parent.width > card.parent.height
                                                      : false
        readonly property int barHeight: 44
        readonly property color text: styleText.color
        readonly property color background: stylePane.background
                                            && stylePane.background.color !== undefined
                                            ? stylePane.background.color : card.palette.window
        readonly property color onTint: readableOn(card.color, background, text)
        readonly property color tintedText: contrast(card.color, background) >= 4.5 ? card.color
                                                                                    : text

        // The contrast ratio of two colours, from 1 to 21, as WCAG defines it.
        function contrast(a, b) {
            const linear = v => v <= 0.04045 ? v / 12.92 : Math.pow((v + 0.055) / 1.055, 2.4)
            const luminance = c => 0.2126 * linear(c.r) + 0.7152 * linear(c.g)
                                   + 0.0722 * linear(c.b)
            const x = luminance(a), y = luminance(b)
            return (Math.max(x, y) + 0.05) / (Math.min(x, y) + 0.05)
        }
        function readableOn(background, first, second) {
            return contrast(first, background) >= contrast(second, background) ? first : second
        }
    }

    parent: Overlay.overlay
    anchors.centerIn: parent
    width: parent ? parent.width - 30 : 0
    height: customizing ? (look.landscape ? parent.height - 60 : 400) + look.barHeight
                        : (look.landscape ? 340 : 460)
    modal: true
    dim: true
    closePolicy: Popup.NoAutoClose
    padding: 0
    background: Rectangle {
        color: look.background
        radius: 4
    }

    contentItem: Item {
        clip: true

        Label {
            id: styleText
            visible: false
        }
        Pane {
            id: stylePane
            visible: false
        }

        ColumnLayout {
            visible: !card.customizing
            anchors.fill: parent
            anchors.leftMargin: 24
            anchors.topMargin: 32
            anchors.rightMargin: 24
            anchors.bottomMargin: 24
            spacing: 12

            Rectangle {
                Layout.alignment: Qt.AlignHCenter
                implicitWidth: 72
                implicitHeight: 72
                radius: 36
                color: card.color
                Label {
                    anchors.centerIn: parent
                    text: "!"
                    color: look.onTint
                    font.pointSize: 30
                    font.bold: true
                }
            }
            Label {
                Layout.fillWidth: true
                text: card.header
                color: look.tintedText
                font.pointSize: 17
                font.bold: true
                horizontalAlignment: Text.AlignHCenter
                wrapMode: Text.Wrap
            }
            Label {
                Layout.fillWidth: true
                text: card.subHeader
                horizontalAlignment: Text.AlignHCenter
                wrapMode: Text.Wrap
            }
            Item {
                Layout.fillHeight: true
            }
            Button {
                id: keepMeUpdated
                Layout.fillWidth: true
                Layout.preferredHeight: 46
                text: qsTr("Keep Me Updated")
                font.bold: true
                contentItem: Label {
                    text: keepMeUpdated.text
                    font: keepMeUpdated.font
                    color: look.onTint
                    horizontalAlignment: Text.AlignHCenter
                    verticalAlignment: Text.AlignVCenter
                }
                background: Rectangle {
                    color: card.color
                    radius: 4
                }
                onClicked: {
                    card.close()
                    BVTNotify.requestPushPermissions(card.permissionDelay)
                    card.ended(Brevanti.CardKeptUpdated)
                }
            }
            Button {
                id: customize
                Layout.fillWidth: true
                Layout.preferredHeight: 46
                text: qsTr("Customize Notifications")
                font.bold: true
                contentItem: Label {
                    text: customize.text
                    font: customize.font
                    color: look.tintedText
                    horizontalAlignment: Text.AlignHCenter
                    verticalAlignment: Text.AlignVCenter
                }
                background: Rectangle {
                    color: "transparent"
                    radius: 4
                    border.color: card.color
                    border.width: 2
                }
                onClicked: card.customizing = true
            }
            Button {
                id: noThanks
                Layout.fillWidth: true
                Layout.preferredHeight: 36
                text: qsTr("No Thanks")
                flat: true
                contentItem: Label {
                    text: noThanks.text
                    font: noThanks.font
                    horizontalAlignment: Text.AlignHCenter
                    verticalAlignment: Text.AlignVCenter
                }
                background: null
                onClicked: {
                    card.close()
                    card.ended(Brevanti.CardDeclined)
                }
            }
        }

        Rectangle {
            id: bar
            visible: card.customizing
            width: parent.width
            height: look.barHeight
            color: card.color
            Label {
                anchors.centerIn: parent
                text: qsTranslate("PreferencesPage", "Notifications")
                color: look.onTint
                font.pixelSize: 17
                font.bold: true
            }
            Button {
                id: done
                anchors.right: parent.right
                anchors.verticalCenter: parent.verticalCenter
                height: parent.height
                text: qsTranslate("PreferencesPage", "Done")
                flat: true
                contentItem: Label {
                    text: done.text
                    color: look.onTint
                    horizontalAlignment: Text.AlignHCenter
                    verticalAlignment: Text.AlignVCenter
                }
                background: null
                onClicked: {
                    card.close()
                    card.ended(Brevanti.CardCustomized)
                }
            }
        }

        // Made on each Customize, so that every showing fetches once.
        Loader {
            active: card.customizing
            y: look.barHeight
            width: parent.width
            height: parent.height - look.barHeight
            sourceComponent: PreferencesPage {}
        }
    }
}
