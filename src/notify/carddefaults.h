#pragma once

#include <QColor>
#include <QPixmap>
#include <QString>

// What the permission card shows when the host gives nothing else. The texts go through the host's
// translators whenever they are asked for, in the context PermissionCard that the QML card's qsTr()
// uses too.
namespace bvt::carddefaults {

QColor color();
// Empty without a QGuiApplication, or when the image is neither a resource nor beside the program.
QPixmap icon();
QString header();
QString subHeader();

} // namespace bvt::carddefaults
