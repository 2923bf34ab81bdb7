#pragma once

#include <Brevanti/brevanti_core_export.h>

#include <QObject>
#include <QString>
#include <QVariant>

#include <functional>

namespace bvt {

class NavigationController;
class ViewController;

// The permission card as asked for: the colour (a QColor, or what QML gave), the icon (a QPixmap,
// or what QML gave), the texts.
struct CardRequest
{
    QVariant color;
    QVariant icon;
    QString header;
    QString subHeader;
};

using CardPresenter = std::function<void(const CardRequest &)>;

// The QML card's presenter: it runs only while its owner lives; the last one installed wins.
BREVANTI_CORE_EXPORT void installCardPresenter(QObject *owner, CardPresenter presenter);

// What only the Widgets library can do. It installs these as it is loaded, so that BVTNotify's
// screen calls live in this library with the rest of BVTNotify and reach the widgets when a host
// has them.
struct WidgetScreens
{
    CardPresenter card;
    std::function<ViewController *(ViewController *)> topViewController;
    std::function<ViewController *()> keyWindowRoot;
    std::function<void(NavigationController *)> openPreferences;
};
BREVANTI_CORE_EXPORT void installWidgetScreens(WidgetScreens screens);
// Empty members until the Widgets library is loaded.
BREVANTI_CORE_EXPORT const WidgetScreens &widgetScreens();
// Whether the widget screens can be shown: the Widgets library is loaded and the application is a
// QApplication (a widget made without one aborts the process).
BREVANTI_CORE_EXPORT bool widgetScreensUsable();

// Shows the card where the host can show it: the widget card in a QApplication once the Widgets
// library is loaded, else the QML card; false when neither can.
BREVANTI_CORE_EXPORT bool presentCardWhereShown(const CardRequest &request);

// The warning when a screen was asked for and neither kind can be shown.
void warnNothingIsShown();

} // namespace bvt
