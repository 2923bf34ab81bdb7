import QtQuick
import QtQuick.Controls
import Brevanti

// A first run, walked by itself one step at a time: once the device is registered the host opens
// the permission card from C++, whose texts must read; Customize Notifications shows the
// preferences, whose texts must read too; the first switch is flipped and the service asked until
// it reads the flip; Done closes the card; the user signs in. Exits 0 when every step happened, 1
// naming the step that did not within ten seconds.
Window {
    id: window
    width: 375
    height: 667
    visible: true
    Component.onCompleted: BVTNotify.window = window // the card shows here

    property int step: 0
    property real stepStarted: Date.now()
    property var flipped // the switch's name and new position
    property bool asking: false

    function find(item, test) {
        if (!item.visible)
            return null
        if (test(item))
            return item
        for (let i = 0; i < item.children.length; ++i) {
            const found = find(item.children[i], test)
            if (found)
                return found
        }
        return null
    }
    function tap(text) {
        const button = find(contentItem, item => item instanceof Button && item.text === text)
        if (button)
            button.clicked()
        return button !== null
    }
    function firstSwitch() { return find(contentItem, item => item instanceof Switch) }
    function readsFlip(document) {
        return document.some(category => category.preferences.some(
                preference => preference.name === flipped.name && preference.enabled === flipped.on))
    }

    // The card's texts, read in the style the host runs in; an unreadable one ends the walk.
    function readable(where) {
        const unreadable = readability.unreadable(window, where)
        if (unreadable !== "")
            throw new Error(unreadable)
        return true
    }

    readonly property var steps: [
        ["the device to be registered", () => Brevanti.deviceId !== ""],
        ["the card", () => find(contentItem, item => item instanceof Button
                                                      && item.text === "No Thanks") !== null],
        ["the card to read", () => readable("the card")],
        ["the Customize Notifications button", () => tap("Customize Notifications")],
        ["the preferences in the card", () => firstSwitch() !== null],
        ["the preferences to read", () => readable("the preferences")],
        ["a switch", () => {
            const toggle = firstSwitch()
            if (toggle) {
                toggle.toggle()
                flipped = {name: toggle.Accessible.name, on: toggle.checked}
                toggle.toggled()
            }
            return toggle !== null
        }],
        ["the service to read the flip", () => {
            if (!asking) {
                asking = true
                BVTNotify.getPreferences(document => { asking = false; flipped.seen = readsFlip(document) })
            }
            return flipped.seen === true
        }],
        ["the Done button", () => tap("Done")],
        ["the card to close", () => firstSwitch() === null],
        ["the sign-in", () => {
            Brevanti.assignDeviceToUser("user-42")
            return true
        }],
        ["the user to be signed in", () => Brevanti.user === "user-42"],
    ]

    Timer {
        interval: 50
        repeat: true
        running: true
        onTriggered: {
            if (window.step === window.steps.length) {
                stop()
                Qt.exit(0)
                return
            }
            const [name, done] = window.steps[window.step]
            let problem = Date.now() - window.stepStarted > 10000 ? "waited in vain" : ""
            try {
                if (done()) {
                    console.info("quick-host:", name + ": done")
                    window.step += 1
                    window.stepStarted = Date.now()
                    return
                }
            } catch (error) {
                problem = String(error)
            }
            if (problem !== "") {
                stop()
                console.error("quick-host:", name + ":", problem)
                Qt.exit(1)
            }
        }
    }
}
