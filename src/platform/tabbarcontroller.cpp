#include <Brevanti/platform/TabBarController.h>

#include <QStackedWidget>
#include <QTabBar>
#include <QVBoxLayout>

namespace bvt {

TabBarController::TabBarController(QObject *parent) : ViewController(parent) { }

QList<ViewController *> TabBarController::viewControllers() const
{
    return m_controllers;
}

void TabBarController::setViewControllers(const QList<ViewController *> &controllers)
{
    m_controllers = controllers;
    for (ViewController *controller : controllers)
        controller->setParent(this);
    m_selected = controllers.isEmpty() ? -1 : 0;
    if (isViewLoaded())
        fillTabs();
}

ViewController *TabBarController::selectedViewController() const
{
    return m_controllers.value(m_selected);
}

int TabBarController::selectedIndex() const
{
    return m_selected;
}

void TabBarController::setSelectedIndex(int index)
{
    if (index < 0 || index >= m_controllers.size())
        return;
    m_selected = index;
    if (!isViewLoaded())
        return;
    const QSignalBlocker quiet(m_tabs);
    m_tabs->setCurrentIndex(index);
    m_stack->setCurrentWidget(m_controllers.at(index)->view());
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
    m_stack = new QStackedWidget(view);
    m_tabs = new QTabBar(view);
    m_tabs->setShape(QTabBar::RoundedSouth);
    m_tabs->setExpanding(true);
    layout->addWidget(m_stack);
    layout->addWidget(m_tabs);
    connect(m_tabs, &QTabBar::currentChanged, this, [this](int index) { setSelectedIndex(index); });
    setView(view);
    fillTabs();
}

void TabBarController::fillTabs()
{
    // Quiet, or the first tab added would report itself selected and replace the selection.
    const QSignalBlocker quiet(m_tabs);
    while (m_tabs->count() > 0)
        m_tabs->removeTab(0);
    while (m_stack->count() > 0)
        m_stack->removeWidget(m_stack->widget(0));
    for (ViewController *controller : std::as_const(m_controllers)) {
        m_stack->addWidget(controller->view());
        m_tabs->addTab(controller->title());
    }
    setSelectedIndex(m_selected);
}

} // namespace bvt
