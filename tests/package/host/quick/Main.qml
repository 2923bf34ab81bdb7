import QtQuick
import QtQuick.Controls
import Brevanti

// A first run, walked by itself, one step at a time: once the device is registered the permission
// card opens; Customize Notifications shows the preferences; the first switch is flipped and the
// service is asked until it reads the flip; Done closes the card; the user signs in. Exits 0 when
// every step happened, 1 with the step's name when one did not within ten seconds.
Window {
    id: window
    width: 375
    height: 667
    visible: true

    property int step: 0
    property var stepStarted: Date.now()
    property string flippedName
    property bool flippedTo
    property bool asking: false // a preference fetch under way

    function fail(why) {
        console.error("quick-host:", why)
        Qt.exit(1)
    }
    function next() {
        console.info("quick-host: done waiting for", steps[step][0])
        step += 1
        stepStarted = Date.now()
    }
    // The first shown item, depth first, that passes the test.
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
    function button(text) {
        return find(window.contentItem, item => item instanceof Button && item.text === text)
    }
    function firstSwitch() {
        return find(window.contentItem, item => item instanceof Switch)
    }
    function readsFlip(document) {
        for (const category of document)
            for (const preference of category.preferences)
                if (preference.name === flippedName)
                    return preference.enabled === flippedTo
        return false
    }

    readonly property var steps: [
        ["the device to be registered", () => {
            if (Brevanti.currentDevice === "")
                return false
            Brevanti.requestCustomPreferences()
            return true
        }],
        ["the permission card", () => {
            const customize = button("Customize Notifications")
            if (!customize || !button("No Thanks"))
                return false
            customize.clicked()
            return true
        }],
        ["the preferences in the card", () => {
            const toggle = firstSwitch()
            if (!toggle)
                return false
            flippedName = toggle.Accessible.name
            toggle.toggle()
            flippedTo = toggle.checked
            toggle.toggled()
            return true
        }],
        ["the service to read the flip", () => {
            if (!asking) {
                asking = true
                Brevanti.getPreferences(document => {
                    asking = false
                    if (step === 3 && readsFlip(document))
                        next()
                }, text => fail("the preferences could not be read: " + text))
            }
            return false
        }],
        ["Done to close the card", () => {
            const done = button("Done")
            if (!done)
                return false
            done.clicked()
            return true
        }],
        ["the card to close", () => {
            if (button("No Thanks") || firstSwitch())
                return false
            Brevanti.assignDeviceToUser("user-42", null, text => fail("sign-in failed: " + text))
            return true
        }],
        ["the user to be signed in", () => Brevanti.currentUser === "user-42"],
    ]

    Timer {
        interval: 50
        repeat: true
        running: true
        onTriggered: {
            if (window.step === window.steps.length) {
                stop()
                Qt.exit(0)
            } else if (window.steps[window.step][1]()) {
                window.next()
            } else if (Date.now() - window.stepStarted > 10000) {
                stop()
                window.fail("waited in vain for " + window.steps[window.step][0])
            }
        }
    }
}
