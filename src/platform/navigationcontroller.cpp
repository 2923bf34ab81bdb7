#include <Brevanti/platform/NavigationController.h>

#include "platform/controllerstack.h"

#include <QStackedWidget>
#include <QVBoxLayout>

namespace bvt {

NavigationController::NavigationController(ViewController *root, QObject *parent)
    : ViewController(parent),
      m_controllers(std::make_unique<ControllerStack>(this, [this] { showTop(false); }))
{
    if (root)
        pushViewController(root, false);
}

NavigationController::~NavigationController() = default;

QList<ViewController *> NavigationController::viewControllers() const
{
    return m_controllers->controllers();
}

ViewController *NavigationController::topViewController() const
{
    return m_controllers->top();
}

NavigationBar *NavigationController::navigationBar()
{
    view();
    return m_bar;
}

void NavigationController::pushViewController(ViewController *controller, bool animated)
{
    m_controllers->push(controller);
    // Before the view exists, loadView puts every controller's view in the stack.
    if (isViewLoaded()) {
        m_pages->addWidget(controller->view());
        showTop(animated);
    }
}

ViewController *NavigationController::popViewControllerAnimated(bool animated)
{
    ViewController *popped = m_controllers->pop();
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
    m_bar = new NavigationBar(view);
    m_pages = new QStackedWidget(view);
    layout->addWidget(m_bar);
    layout->addWidget(m_pages, 1);
    setView(view);
    m_controllers->setBar(m_bar);
    for (ViewController *controller : viewControllers())
        m_pages->addWidget(controller->view());
    showTop(false);
}

void NavigationController::showTop(bool animated)
{
    ViewController *top = topViewController();
    // An empty stack shows its bare bar until the first push; an unloaded one shows nothing yet.
    if (!top || !isViewLoaded())
        return;
    // The stack sizes a new page only on its next layout pass; the hooks may want the size now.
    top->view()->setGeometry(m_pages->contentsRect());
    m_controllers->showTop(animated, view()->isVisible(),
                           [this](QWidget *page) { m_pages->setCurrentWidget(page); });
}

} // namespace bvt
