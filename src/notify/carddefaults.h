#pragma once

#include <QCoreApplication>
#include <QString>

// The permission card's defaults, shared by the widget card and the QML one; the colour is given
// by its parts, as this layer has no Qt Gui. The texts go through the host's translators whenever
// they are asked for, in the context PermissionCard that the QML card's qsTr() uses too.
namespace bvt::carddefaults {

inline constexpr float red = 0.23f;
inline constexpr float green = 0.36f;
inline constexpr float blue = 0.59f;
inline constexpr char iconName[] = "bvt-alert-icon-default.png";

inline QString header()
{
    return QCoreApplication::translate("PermissionCard", "Stay Up To Date");
}

inline QString subHeader()
{
    return QCoreApplication::translate(
            "PermissionCard",
            "Turn on notifications to make sure you don't miss anything you care about!");
}

} // namespace bvt::carddefaults
