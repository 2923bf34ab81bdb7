#include "carddefaults.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

namespace bvt::carddefaults {

namespace {
constexpr char iconName[] = "bvt-alert-icon-default.png";
} // namespace

QColor color()
{
    return QColor::fromRgbF(0.23f, 0.36f, 0.59f, 1.0f);
}

QPixmap icon()
{
    // A pixmap made without a QGuiApplication aborts the process.
    if (!QCoreApplication::instance() || !QCoreApplication::instance()->inherits("QGuiApplication"))
        return QPixmap();
    const QString name = QString::fromLatin1(iconName);
    const QString beside = QDir(QCoreApplication::applicationDirPath()).filePath(name);
    for (const QString &path : {QStringLiteral(":/") + name, beside}) {
        if (QFileInfo::exists(path))
            return QPixmap(path);
    }
    return QPixmap();
}

QString header()
{
    return QCoreApplication::translate("PermissionCard", "Stay Up To Date");
}

QString subHeader()
{
    return QCoreApplication::translate(
            "PermissionCard",
            "Turn on notifications to make sure you don't miss anything you care about!");
}

} // namespace bvt::carddefaults
