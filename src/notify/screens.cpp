// BVTNotify's screen calls. They live here with the rest of BVTNotify and show the widget screens
// when the host has a QApplication and the Widgets library, else the QML card when the QML module
// is in use.
#include <Brevanti/BVT.h>
#include <Brevanti/BVTNotify.h>
#include <Brevanti/Client.h>

#include "core/log.h"
#include "core/logging.h"
#include "core/screens.h"
#include "notify/permissioncard.h"

#include <QColor>
#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QPixmap>

namespace {

void sayNothingIsShown()
{
    qCWarning(bvt::lcUi,
              "The library's screens need a QApplication (Qt Widgets); nothing is shown");
}

constexpr char defaultIconName[] = "bvt-alert-icon-default.png";

} // namespace

bool bvt::permissionCardWanted()
{
    if (BVT::currentDeviceToken().isNull())
        return true;
    log("You have already accepted push notifications!");
    Q_EMIT Client::instance()->cardFinished(Client::CardNotShown);
    return false;
}

void BVTNotify::requestCustomPreferences()
{
    requestCustomPreferencesWithColor(defaultNotificationColor());
}

void BVTNotify::requestCustomPreferencesWithColor(const QColor &color)
{
    requestCustomPreferencesWithColor(color, defaultNotificationIcon());
}

void BVTNotify::requestCustomPreferencesWithColor(const QColor &color, const QPixmap &icon)
{
    requestCustomPreferencesWithColor(color, icon, defaultNotificationHeader());
}

void BVTNotify::requestCustomPreferencesWithColor(const QColor &color, const QPixmap &icon,
                                                  const QString &header)
{
    requestCustomPreferencesWithColor(color, icon, header, defaultNotificationSubHeader());
}

void BVTNotify::requestCustomPreferencesWithColor(const QColor &color, const QPixmap &icon,
                                                  const QString &header, const QString &subHeader)
{
    if (!bvt::permissionCardWanted()
        || bvt::presentCardWhereShown(
                {QVariant::fromValue(color), QVariant::fromValue(icon), header, subHeader}))
        return;
    sayNothingIsShown();
    Q_EMIT bvt::Client::instance()->cardFinished(bvt::Client::CardNotShown);
}

QColor BVTNotify::defaultNotificationColor()
{
    return QColor::fromRgbF(0.23f, 0.36f, 0.59f, 1.0f);
}

QPixmap BVTNotify::defaultNotificationIcon()
{
    // A pixmap made without a QGuiApplication aborts the process.
    if (!QCoreApplication::instance() || !QCoreApplication::instance()->inherits("QGuiApplication"))
        return QPixmap();
    const QString name = QString::fromLatin1(defaultIconName);
    const QString beside = QDir(QCoreApplication::applicationDirPath()).filePath(name);
    for (const QString &path : {QStringLiteral(":/") + name, beside}) {
        if (QFileInfo::exists(path))
            return QPixmap(path);
    }
    return QPixmap();
}

// The defaults' texts go through the host's translators whenever they are asked for, in the context
// PermissionCard that the QML card's qsTr() uses too; the QML card takes these defaults.
QString BVTNotify::defaultNotificationHeader()
{
    return QCoreApplication::translate("PermissionCard", "Stay Up To Date");
}

QString BVTNotify::defaultNotificationSubHeader()
{
    return QCoreApplication::translate(
            "PermissionCard",
            "Turn on notifications to make sure you don't miss anything you care about!");
}

void BVTNotify::openPreferencesWithNavigationController(bvt::NavigationController *navigation)
{
    if (bvt::widgetScreensUsable())
        bvt::widgetScreens().openPreferences(navigation);
    else
        sayNothingIsShown();
}

bvt::ViewController *BVTNotify::topViewController()
{
    const auto &root = bvt::widgetScreens().keyWindowRoot;
    return root ? topViewController(root()) : nullptr;
}

bvt::ViewController *BVTNotify::topViewController(bvt::ViewController *controller)
{
    // A controller exists only where the Widgets library does, which walks its own hierarchies.
    const auto &walk = bvt::widgetScreens().topViewController;
    return walk ? walk(controller) : nullptr;
}
