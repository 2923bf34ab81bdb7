#include <Brevanti/platform/TabBarController.h>

#include <QStackedWidget>
#include <QTabBar>
#include <QVBoxLayout>

namespace bvt {

class TabBarController::Private
{
public:
    QList<ViewController *> controllers;
    int selected = -1;
    QStackedWidget *stack = nullptr;
    QTabBar *tabs = nullptr;
};

TabBarController::TabBarController(QObject *parent)
    : ViewController(parent), d(std::make_unique<Private>())
{ }

TabBarController::~TabBarController() = default;

QList<ViewController *> TabBarController::viewControllers() const
{
    return d->controllers;
}

void TabBarController::setViewControllers(const QList<ViewController *> &controllers)
{
    d->controllers = controllers;
    for (ViewController *controller : controllers)
        controller->setParent(this);
    d->selected = controllers.isEmpty() ? -1 : 0;
    if (isViewLoaded())
        fillTabs();
}

ViewController *TabBarController::selectedViewController() const
{
    return d->controllers.value(d->selected);
}

int TabBarController::selectedIndex() const
{
    return d->selected;
}

void TabBarController::setSelectedIndex(int index)
{
    if (index < 0 || index >= d->controllers.size())
        return;
    d->selected = index;
    if (!isViewLoaded())
        return;
    const QSignalBlocker quiet(d->tabs);
    d->tabs->setCurrentIndex(index);
    d->stack->setCurrentWidget(d->controllers.at(index)->view());
}

void TabBarController::viewWillAppear(bool animated)
{
    if (ViewController *selected = selectedViewController())
        selected->viewWillAppear(animated);
}

void TabBarController::viewDidAppear(bool animated)
{
    if (ViewController *selected = selectedViewController())
        selected->viewDidAppear(animated);
}

void TabBarController::loadView()
{
    auto *view = new QWidget;
    auto *layout = new QVBoxLayout(view);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    d->stack = new QStackedWidget(view);
    d->tabs = new QTabBar(view);
    d->tabs->setShape(QTabBar::RoundedSouth);
    d->tabs->setExpanding(true);
    layout->addWidget(d->stack);
    layout->addWidget(d->tabs);
    connect(d->tabs, &QTabBar::currentChanged, this,
            [this](int index) { setSelectedIndex(index); });
    setView(view);
    fillTabs();
}

void TabBarController::fillTabs()
{
    // Quiet, or the first tab added would report itself selected and replace the selection.
    const QSignalBlocker quiet(d->tabs);
    while (d->tabs->count() > 0)
        d->tabs->removeTab(0);
    while (d->stack->count() > 0)
        d->stack->removeWidget(d->stack->widget(0));
    for (ViewController *controller : std::as_const(d->controllers)) {
        d->stack->addWidget(controller->view());
        d->tabs->addTab(controller->title());
    }
    setSelectedIndex(d->selected);
}

} // namespace bvt
