#include <Brevanti/platform/NavigationController.h>

#include "platform/controllerstack.h"

#include <QStackedWidget>
#include <QVBoxLayout>

namespace bvt {

class NavigationController::Private
{
public:
    explicit Private(NavigationController *navigation)
        : controllers(navigation, [navigation] { navigation->showTop(false); })
    { }

    ControllerStack controllers;
    NavigationBar *bar = nullptr;
    QStackedWidget *pages = nullptr;
};

NavigationController::NavigationController(ViewController *root, QObject *parent)
    : ViewController(parent), d(std::make_unique<Private>(this))
{
    if (root)
        pushViewController(root, false);
}

NavigationController::~NavigationController() = default;

QList<ViewController *> NavigationController::viewControllers() const
{
    return d->controllers.controllers();
}

ViewController *NavigationController::topViewController() const
{
    return d->controllers.top();
}

NavigationBar *NavigationController::navigationBar()
{
    view();
    return d->bar;
}

void NavigationController::pushViewController(ViewController *controller, bool animated)
{
    d->controllers.push(controller);
    // Before the view exists, loadView puts every controller's view in the stack.
    if (isViewLoaded()) {
        d->pages->addWidget(controller->view());
        showTop(animated);
    }
}

ViewController *NavigationController::popViewControllerAnimated(bool animated)
{
    ViewController *popped = d->controllers.pop();
    if (popped)
        showTop(animated);
    return popped;
}

void NavigationController::viewWillAppear(bool animated)
{
    if (ViewController *top = topViewController())
        top->viewWillAppear(animated);
}

void NavigationController::viewDidAppear(bool animated)
{
    if (ViewController *top = topViewController())
        top->viewDidAppear(animated);
}

void NavigationController::loadView()
{
    auto *view = new QWidget;
    auto *layout = new QVBoxLayout(view);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    d->bar = new NavigationBar(view);
    d->pages = new QStackedWidget(view);
    layout->addWidget(d->bar);
    layout->addWidget(d->pages, 1);
    setView(view);
    d->controllers.setBar(d->bar);
    for (ViewController *controller : viewControllers())
        d->pages->addWidget(controller->view());
    showTop(false);
}

void NavigationController::showTop(bool animated)
{
    ViewController *top = topViewController();
    // An empty stack shows its bare bar until the first push; an unloaded one shows nothing yet.
    if (!top || !isViewLoaded())
        return;
    // The stack sizes a new page only on its next layout pass; the hooks may want the size now.
    top->view()->setGeometry(d->pages->contentsRect());
    d->controllers.showTop(animated, view()->isVisible(),
                           [this](QWidget *page) { d->pages->setCurrentWidget(page); });
}

} // namespace bvt
