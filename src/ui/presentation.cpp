// Showing the library's screens: the permission popup and the preferences screen.
#include <Brevanti/BVT.h>
#include <Brevanti/BVTNotify.h>
#include <Brevanti/BVTNotifyPreferencesViewController.h>
#include <Brevanti/BVTNotifyRequestViewController.h>
#include <Brevanti/Client.h>
#include <Brevanti/platform/NavigationController.h>
#include <Brevanti/platform/PopupController.h>
#include <Brevanti/platform/TabBarController.h>
#include <Brevanti/platform/Window.h>

#include "core/cardpresenter.h"
#include "core/log.h"
#include "core/logging.h"
#include "notify/carddefaults.h"

#include <QApplication>
#include <QColor>
#include <QDir>
#include <QFileInfo>
#include <QPixmap>

namespace {

const QString defaultIconName = QString::fromLatin1(bvt::carddefaults::iconName);
constexpr double popupCornerRadius = 4.0;
const QColor dimming = QColor::fromRgbF(0, 0, 0, 0.8f);

// A widget made without a QApplication aborts the process; a host without one gets a line instead.
bool widgetsAvailable()
{
    if (qobject_cast<QApplication *>(QCoreApplication::instance()))
        return true;
    qCWarning(bvt::lcUi,
              "The library's screens need a QApplication (Qt Widgets); nothing is shown");
    return false;
}

// The client shows the widget card through this, in a host whose application is a QApplication.
void installWidgetCard()
{
    bvt::installWidgetCardPresenter([](const bvt::CardRequest &request) {
        if (request.defaults)
            BVTNotify::requestCustomPreferences();
        else
            BVTNotify::requestCustomPreferencesWithColor(request.color.value<QColor>(),
                                                         request.icon.value<QPixmap>(),
                                                         request.header, request.subHeader);
    });
}
Q_CONSTRUCTOR_FUNCTION(installWidgetCard)

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
    // A stored token is the library's only sign that push was accepted already.
    const auto notShown = [] {
        Q_EMIT bvt::Client::instance()->cardFinished(bvt::Client::CardNotShown);
    };
    if (!BVT::currentDeviceToken().isNull()) {
        bvt::log("You have already accepted push notifications!");
        return notShown();
    }
    // Without Qt Widgets, a QML host's card is shown instead, when the QML module is in use.
    if (!qobject_cast<QApplication *>(QCoreApplication::instance())
        && bvt::presentCard(
                {QVariant::fromValue(color), QVariant::fromValue(icon), header, subHeader}))
        return;
    if (!widgetsAvailable())
        return notShown();
    bvt::ViewController *top = topViewController();

    // Process-wide: every popup bar made from now on looks like this, until the next call.
    bvt::PopupNavigationBar::Appearance &look = bvt::PopupNavigationBar::appearance();
    look.barTintColor = color;
    look.tintColor = Qt::white;
    look.barStyle = bvt::PopupNavigationBar::BarStyle::Default;
    look.titleColor = Qt::white;

    auto *request = new BVTNotifyRequestViewController(color, icon, header, subHeader);
    // Owned by the controller it is shown in, so that it goes with it.
    auto *popup = new bvt::PopupController(request, top);
    auto *background = new QWidget;
    background->setGeometry(top ? top->view()->rect() : QRect());
    background->setAutoFillBackground(true);
    QPalette palette = background->palette();
    palette.setColor(QPalette::Window, dimming);
    background->setPalette(palette);
    popup->setBackgroundView(background);
    popup->setCornerRadius(popupCornerRadius);
    if (top) {
        popup->presentInViewController(top);
    } else {
        delete popup; // nowhere to show it, so still ours
        notShown();
    }
}

QColor BVTNotify::defaultNotificationColor()
{
    using namespace bvt::carddefaults;
    return QColor::fromRgbF(red, green, blue, 1.0f);
}

QPixmap BVTNotify::defaultNotificationIcon()
{
    const QString beside = QDir(QCoreApplication::applicationDirPath()).filePath(defaultIconName);
    for (const QString &path : {QStringLiteral(":/") + defaultIconName, beside}) {
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
    if (!widgetsAvailable())
        return;
    auto *preferences = new BVTNotifyPreferencesViewController;
    if (navigation)
        navigation->pushViewController(preferences, true);
    else
        delete preferences;
}

bvt::ViewController *BVTNotify::topViewController()
{
    const bvt::Window *window = bvt::Window::keyWindow();
    return window ? topViewController(window->rootViewController()) : nullptr;
}

bvt::ViewController *BVTNotify::topViewController(bvt::ViewController *controller)
{
    if (auto *navigation = qobject_cast<bvt::NavigationController *>(controller)) {
        // An empty stack has no top: the walk finds nothing, and no popup is shown.
        const QList<bvt::ViewController *> stack = navigation->viewControllers();
        return topViewController(stack.isEmpty() ? nullptr : stack.last());
    }
    if (auto *tabs = qobject_cast<bvt::TabBarController *>(controller))
        return topViewController(tabs->selectedViewController());
    // Recurses on the same controller, not the presented one: kept as the walk has always been.
    if (controller && controller->presentedViewController())
        return topViewController(controller);
    return controller;
}
