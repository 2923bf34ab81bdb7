#include <Brevanti/platform/NavigationController.h>

#include <QStackedWidget>
#include <QVBoxLayout>

namespace bvt {

NavigationController::NavigationController(ViewController *root, QObject *parent)
    : ViewController(parent)
{
    if (root)
        pushViewController(root, false);
}

QList<ViewController *> NavigationController::viewControllers() const
{
    return m_controllers;
}

ViewController *NavigationController::topViewController() const
{
    return m_controllers.isEmpty() ? nullptr : m_controllers.last();
}

NavigationBar *NavigationController::navigationBar()
{
    view();
    return m_bar;
}

void NavigationController::pushViewController(ViewController *controller, bool animated)
{
    controller->setParent(this);
    controller->m_navigationController = this;
    m_controllers.append(controller);
    connect(controller, &ViewController::titleChanged, this, [this, controller] {
        if (m_bar && topViewController() == controller)
            m_bar->setItem(controller->navigationItem());
    });
    // A controller deleted while on the stack leaves it, so the stack never holds a dangling one.
    connect(controller, &QObject::destroyed, this,
            [this, controller] { m_controllers.removeOne(controller); });
    // Before the view exists, loadView puts every controller's view in the stack.
    if (isViewLoaded()) {
        m_stack->addWidget(controller->view());
        showTop(animated);
    }
}

ViewController *NavigationController::popViewControllerAnimated(bool animated)
{
    if (m_controllers.size() < 2)
        return nullptr;
    ViewController *popped = m_controllers.takeLast();
    popped->m_navigationController = nullptr;
    disconnect(popped, nullptr, this, nullptr);
    if (m_stack && popped->m_view) {
        m_stack->removeWidget(popped->m_view);
        popped->m_view->hide();
        // Parentless, the view goes with its controller, which the caller now owns.
        popped->m_view->setParent(nullptr);
    }
    popped->setParent(nullptr);
    if (isViewLoaded())
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
    m_bar = new NavigationBar(view);
    m_stack = new QStackedWidget(view);
    layout->addWidget(m_bar);
    layout->addWidget(m_stack, 1);
    setView(view);
    for (ViewController *controller : std::as_const(m_controllers))
        m_stack->addWidget(controller->view());
    showTop(false);
}

void NavigationController::showTop(bool animated)
{
    ViewController *top = topViewController();
    // An empty stack shows its bare bar until the first push.
    if (!top)
        return;
    // The stack sizes a new page only on its next layout pass; the hooks may want the size now.
    top->view()->setGeometry(m_stack->contentsRect());
    // The hooks only mean something when the change is seen.
    const bool visible = m_view->isVisible();
    if (visible)
        top->viewWillAppear(animated);
    m_stack->setCurrentWidget(top->view());
    m_bar->setItem(top->navigationItem());
    if (visible)
        top->viewDidAppear(animated);
}

} // namespace bvt
