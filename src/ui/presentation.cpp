// The widget screens behind BVTNotify's screen calls, installed as this library is loaded.
#include <Brevanti/BVTNotify.h>
#include <Brevanti/BVTNotifyPreferencesViewController.h>
#include <Brevanti/BVTNotifyRequestViewController.h>
#include <Brevanti/Client.h>
#include <Brevanti/brevanti_widgets_export.h>
#include <Brevanti/platform/NavigationController.h>
#include <Brevanti/platform/PopupController.h>
#include <Brevanti/platform/TabBarController.h>
#include <Brevanti/platform/Window.h>

#include "core/screens.h"
#include "screencolors.h"

#include <QColor>
#include <QPixmap>

namespace {

constexpr double popupCornerRadius = 4.0;
const QColor dimming = QColor::fromRgbF(0, 0, 0, 0.8f);

void showCard(const bvt::CardRequest &request)
{
    const QColor color = request.color.value<QColor>();
    bvt::ViewController *top = BVTNotify::topViewController();

    // Process-wide: every popup bar made from now on looks like this, until the next call.
    const bvt::ScreenColors colors = bvt::ScreenColors::current();
    bvt::PopupNavigationBar::Appearance &look = bvt::PopupNavigationBar::appearance();
    look.barTintColor = color;
    look.tintColor = colors.onTint(color);
    look.barStyle = bvt::PopupNavigationBar::BarStyle::Default;
    look.titleColor = colors.onTint(color);

    auto *card = new BVTNotifyRequestViewController(color, request.icon.value<QPixmap>(),
                                                    request.header, request.subHeader);
    // Owned by the controller it is shown in, so that it goes with it.
    auto *popup = new bvt::PopupController(card, top);
    auto *background = new QWidget;
    background->setGeometry(top ? top->view()->rect() : QRect());
    background->setAutoFillBackground(true);
    QPalette palette = background->palette();
    palette.setColor(QPalette::Window, dimming);
    background->setPalette(palette);
    popup->setBackgroundView(background);
    popup->setCornerRadius(popupCornerRadius);
    popup->setCardColor(colors.background);
    if (top) {
        popup->presentInViewController(top);
    } else {
        delete popup; // nowhere to show it, so still ours
        Q_EMIT bvt::Client::instance()->cardFinished(bvt::Client::CardNotShown);
    }
}

void openPreferences(bvt::NavigationController *navigation)
{
    if (navigation)
        navigation->pushViewController(new BVTNotifyPreferencesViewController, true);
}

bvt::ViewController *keyWindowRoot()
{
    const bvt::Window *window = bvt::Window::keyWindow();
    return window ? window->rootViewController() : nullptr;
}

bvt::ViewController *topViewController(bvt::ViewController *controller)
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

void installWidgetScreens()
{
    bvt::installWidgetScreens({showCard, topViewController, keyWindowRoot, openPreferences});
}
Q_CONSTRUCTOR_FUNCTION(installWidgetScreens)

} // namespace

// A static host names this, so that the linker keeps this file and its installation above, which
// nothing else in the host refers to.
extern "C" BREVANTI_WIDGETS_EXPORT const int brevanti_widget_screens = 1;
