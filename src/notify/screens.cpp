// BVTNotify's screen calls. They live here with the rest of BVTNotify and show the widget screens
// when the host has a QApplication and the Widgets library, else the QML card when the QML module
// is in use.
#include <Brevanti/BVT.h>
#include <Brevanti/BVTNotify.h>
#include <Brevanti/Client.h>

#include "core/log.h"
#include "core/logging.h"
#include "core/screens.h"
#include "notify/carddefaults.h"

#include <QColor>
#include <QDir>
#include <QFileInfo>
#include <QPixmap>

namespace {

void sayNothingIsShown()
{
    qCWarning(bvt::lcUi,
              "The library's screens need a QApplication (Qt Widgets); nothing is shown");
}

bool widgetScreensAvailable()
{
    const QCoreApplication *application = QCoreApplication::instance();
    return application && application->inherits("QApplication")
            && bvt::widgetScreens().openPreferences;
}

} // namespace

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
    bvt::Client *client = bvt::Client::instance();
    // A stored token is the library's only sign that push was accepted already.
    if (!BVT::currentDeviceToken().isNull()) {
        bvt::log("You have already accepted push notifications!");
        Q_EMIT client->cardFinished(bvt::Client::CardNotShown);
        return;
    }
    if (bvt::presentCardWhereShown(
                {QVariant::fromValue(color), QVariant::fromValue(icon), header, subHeader}))
        return;
    sayNothingIsShown();
    Q_EMIT client->cardFinished(bvt::Client::CardNotShown);
}

QColor BVTNotify::defaultNotificationColor()
{
    using namespace bvt::carddefaults;
    return QColor::fromRgbF(red, green, blue, 1.0f);
}

QPixmap BVTNotify::defaultNotificationIcon()
{
    // A pixmap made without a QGuiApplication aborts the process.
    if (!QCoreApplication::instance() || !QCoreApplication::instance()->inherits("QGuiApplication"))
        return QPixmap();
    const QString name = QString::fromLatin1(bvt::carddefaults::iconName);
    const QString beside = QDir(QCoreApplication::applicationDirPath()).filePath(name);
    for (const QString &path : {QStringLiteral(":/") + name, beside}) {
        if (QFileInfo::exists(path))
            return QPixmap(path);
    }
    return QPixmap();
}

QString BVTNotify::defaultNotificationHeader()
{
    return bvt::carddefaults::header();
}

QString BVTNotify::defaultNotificationSubHeader()
{
    return bvt::carddefaults::subHeader();
}

void BVTNotify::openPreferencesWithNavigationController(bvt::NavigationController *navigation)
{
    if (widgetScreensAvailable())
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
