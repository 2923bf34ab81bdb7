#include "screens.h"

#include "logging.h"

#include <QCoreApplication>
#include <QPointer>

namespace bvt {

namespace {

struct QuickPresenter
{
    QPointer<QObject> owner;
    CardPresenter presenter;
};

QuickPresenter &quickPresenter()
{
    static QuickPresenter one;
    return one;
}

WidgetScreens &installedWidgetScreens()
{
    static WidgetScreens screens;
    return screens;
}

} // namespace

void installCardPresenter(QObject *owner, CardPresenter presenter)
{
    quickPresenter() = {owner, std::move(presenter)};
}

void installWidgetScreens(WidgetScreens screens)
{
    installedWidgetScreens() = std::move(screens);
}

const WidgetScreens &widgetScreens()
{
    return installedWidgetScreens();
}

bool widgetScreensUsable()
{
    // By name: this library does not link Qt Widgets.
    const QCoreApplication *application = QCoreApplication::instance();
    return application && application->inherits("QApplication") && widgetScreens().card;
}

bool presentCardWhereShown(const CardRequest &request)
{
    if (widgetScreensUsable()) {
        widgetScreens().card(request);
        return true;
    }
    const QuickPresenter &quick = quickPresenter();
    if (!quick.owner || !quick.presenter)
        return false;
    quick.presenter(request);
    return true;
}

void warnNothingIsShown()
{
    qCWarning(lcUi, "The library's screens need a QApplication (Qt Widgets); nothing is shown");
}

} // namespace bvt
