import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Brevanti

// The permission card over the dimmed window, the widget card's look and buttons: Keep Me Updated
// closes it and asks for push permission once it has gone, Customize Notifications shows the
// preferences inside it under a bar whose Done closes it, No Thanks closes it.
// It emits ended(outcome) with how it ended, one of the client Brevanti's CardOutcome values.
// Its colours are the style's but for the tint, color, which the host passes: the style's pane
// background and dimming, the style's text colour, and on the tint whichever of the style's
// background and text colours reads better; a tinted text that would not read on the background
// takes the style's text colour. (Material and Universal keep their light and dark themes out of
// the palette, so the colours are read from the style's own items.)
// Its texts are translated in this file's context, PermissionCard, but for the bar's, which are the
// preferences page's, in the context PreferencesPage, as the widget screens do.
Popup {
    id: card

    property color color: BVTNotify.defaultNotificationColor
    property var icon // passed on only: the card draws its mark in the colour, as the widget card
    property string header: BVTNotify.defaultNotificationHeader
    property string subHeader: BVTNotify.defaultNotificationSubHeader
    property bool customizing: false
    readonly property int permissionDelay: 100 // lets the card leave before the system prompt
    readonly property bool landscape: parent ? parent.width > parent.height : false
    readonly property int barHeight: 44
    readonly property color textColor: styleText.color
    readonly property color backgroundColor: stylePane.background
                                             && stylePane.background.color !== undefined
                                             ? stylePane.background.color : palette.window
    readonly property color onTint: readableOn(color, backgroundColor, textColor)
    readonly property color tintedText: contrast(color, backgroundColor) >= 4.5 ? color : textColor

    signal ended(int outcome)

    // Embedded and opened again, it shows its buttons again.
    onClosed: customizing = false

    // The contrast ratio of two colours, from 1 to 21, as WCAG defines it.
    function contrast(a, b) {
        const linear = v => v <= 0.04045 ? v / 12.92 : Math.pow((v + 0.055) / 1.055, 2.4)
        const luminance = c => 0.2126 * linear(c.r) + 0.7152 * linear(c.g) + 0.0722 * linear(c.b)
        const x = luminance(a), y = luminance(b)
        return (Math.max(x, y) + 0.05) / (Math.min(x, y) + 0.05)
    }
    function readableOn(background, first, second) {
        return contrast(first, background) >= contrast(second, background) ? first : second
    }

    parent: Overlay.overlay
    anchors.centerIn: parent
    width: parent ? parent.width - 30 : 0
    height: customizing ? (landscape ? parent.height - 60 : 400) + barHeight
                        : (landscape ? 340 : 460)
    modal: true
    dim: true
    closePolicy: Popup.NoAutoClose
    padding: 0
    background: Rectangle {
        color: card.backgroundColor
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
                    color: card.onTint
                    font.pointSize: 30
                    font.bold: true
                }
            }
            Label {
                Layout.fillWidth: true
                text: card.header
                color: card.tintedText
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
                    color: card.onTint
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
                    color: card.tintedText
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
            height: card.barHeight
            color: card.color
            Label {
                anchors.centerIn: parent
                text: qsTranslate("PreferencesPage", "Notifications")
                color: card.onTint
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
                    color: card.onTint
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
            y: card.barHeight
            width: parent.width
            height: parent.height - card.barHeight
            sourceComponent: PreferencesPage {}
        }
    }
}
