#include <Brevanti/platform/NavigationController.h>

#include "platform/controllerstack.h"

#include <QKeyEvent>
#include <QStackedWidget>
#include <QToolButton>
#include <QVBoxLayout>

namespace bvt {

namespace {

// Escape and the phone's back key pop the stack, as the bar's back button does.
class BackKeys : public QObject
{
public:
    BackKeys(NavigationController *navigation) : QObject(navigation), m_navigation(navigation) { }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QEvent::KeyPress && m_navigation->viewControllers().size() > 1) {
            const int key = static_cast<QKeyEvent *>(event)->key();
            if (key == Qt::Key_Escape || key == Qt::Key_Back) {
                m_navigation->goBack();
                return true;
            }
        }
        return QObject::eventFilter(watched, event);
    }

private:
    NavigationController *m_navigation;
};

} // namespace

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

void NavigationController::goBack()
{
    // Popped by the user, the controller is done with, as the phone releases it.
    if (ViewController *popped = popViewControllerAnimated(true))
        popped->deleteLater();
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
    connect(d->bar->backButton(), &QToolButton::clicked, this, &NavigationController::goBack);
    view->installEventFilter(new BackKeys(this));
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
    // Back to the controller below, named by its title, while there is one.
    const QList<ViewController *> stack = viewControllers();
    QString back; // null: no back button
    if (stack.size() > 1)
        back = stack.at(stack.size() - 2)->title().isNull() ? QStringLiteral("")
                                                            : stack.at(stack.size() - 2)->title();
    d->bar->setBackTitle(back);
}

} // namespace bvt
