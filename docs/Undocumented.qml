import QtQuick

/// A type whose one undocumented property fails the QML reference (a fixture of its test).
Item {
    /// Documented.
    property int shown

    // Not a /// comment.
    property int hidden
}
