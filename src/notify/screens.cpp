// BVTNotify's screen calls. The card goes where the host can show it, through the client, which
// hears how it ended; the widget screens need a QApplication and the Widgets library.
#include <Brevanti/BVTNotify.h>

#include "carddefaults.h"
#include "client/clientprivate.h"
#include "core/screens.h"

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
    bvt::ClientPrivate::of().requestCard(
            {QVariant::fromValue(color), QVariant::fromValue(icon), header, subHeader});
}

QColor BVTNotify::defaultNotificationColor()
{
    return bvt::carddefaults::color();
}

QPixmap BVTNotify::defaultNotificationIcon()
{
    return bvt::carddefaults::icon();
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
    if (bvt::widgetScreensUsable())
        bvt::widgetScreens().openPreferences(navigation);
    else
        bvt::warnNothingIsShown();
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
