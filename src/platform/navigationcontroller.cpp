#include <Brevanti/Application.h>
#include <Brevanti/NavigationController.h>

#include <QAction>
#include <QLabel>
#include <QPainter>
#include <QStackedWidget>
#include <QToolButton>
#include <QVBoxLayout>

namespace bvt {

namespace {

constexpr int sideMargin = 8;

void setTextColor(QWidget *widget, const QColor &color)
{
    QPalette palette = widget->palette();
    palette.setColor(QPalette::WindowText, color);
    palette.setColor(QPalette::ButtonText, color);
    widget->setPalette(palette);
}

// The title is centred on the whole bar, so it keeps clear of the button on both sides.
void placeBarChildren(const QSize &size, QLabel *title, QToolButton *right)
{
    const int buttonWidth = right->isHidden() ? 0 : right->sizeHint().width();
    right->setGeometry(size.width() - sideMargin - buttonWidth, 0, buttonWidth, size.height());
    const int inset = sideMargin + buttonWidth + (buttonWidth ? sideMargin : 0);
    title->setGeometry(inset, 0, qMax(0, size.width() - 2 * inset), size.height());
}

} // namespace

NavigationBar::NavigationBar(QWidget *parent)
    : QWidget(parent),
      m_title(new QLabel(this)),
      m_right(new QToolButton(this)),
      m_barTint(Qt::white)
{
    setFixedHeight(height);
    QFont font = m_title->font();
    font.setBold(true);
    font.setPixelSize(17);
    m_title->setFont(font);
    m_title->setAlignment(Qt::AlignCenter);
    m_right->setAutoRaise(true);
    m_right->hide();
    setTintColor(QColor::fromRgbF(0, 0.48f, 1));
}

void NavigationBar::setItem(const NavigationItem &item)
{
    m_title->setText(item.title);
    QAction *action = item.rightBarButtonItem;
    QAction *previous = m_right->defaultAction();
    if (previous && previous != action) {
        disconnect(previous, &QAction::changed, this, nullptr);
        m_right->removeAction(previous);
    }
    if (action && action != previous) {
        m_right->setDefaultAction(action);
        // A new text changes the button's width.
        connect(action, &QAction::changed, this,
                [this] { placeBarChildren(size(), m_title, m_right); });
    }
    m_right->setVisible(action != nullptr);
    placeBarChildren(size(), m_title, m_right);
}

QString NavigationBar::title() const
{
    return m_title->text();
}

QToolButton *NavigationBar::rightButton() const
{
    return m_right;
}

void NavigationBar::setBarTintColor(const QColor &color)
{
    m_barTint = color;
    update();
}

void NavigationBar::setTintColor(const QColor &color)
{
    setTextColor(m_right, color);
}

void NavigationBar::setTitleFont(const QFont &font)
{
    m_title->setFont(font);
}

void NavigationBar::setTitleColor(const QColor &color)
{
    setTextColor(m_title, color);
}

void NavigationBar::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.fillRect(rect(), m_barTint);
    painter.fillRect(0, rect().bottom(), width(), 1, QColor::fromRgbF(0.8f, 0.8f, 0.8f));
}

void NavigationBar::resizeEvent(QResizeEvent *)
{
    placeBarChildren(size(), m_title, m_right);
}

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

Window::Window(QObject *parent) : QObject(parent), m_widget(new QWidget)
{
    auto *layout = new QVBoxLayout(m_widget);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    // The screen sets the window's size, whatever its content asks for.
    layout->setSizeConstraint(QLayout::SetNoConstraint);
    m_widget->resize(Screen::mainScreen().bounds().size());
    connect(&Screen::mainScreen(), &Screen::boundsChanged, this,
            [this](const QRect &bounds) { m_widget->resize(bounds.size()); });
}

Window::~Window()
{
    // The widget takes the controllers' views with it; the root controller, a child, follows.
    delete m_widget;
}

void Window::setRootViewController(ViewController *root)
{
    if (root == m_root)
        return;
    if (m_root) {
        delete m_root->view();
        delete m_root;
    }
    m_root = root;
    if (!root)
        return;
    root->setParent(this);
    m_widget->layout()->addWidget(root->view());
}

ViewController *Window::rootViewController() const
{
    return m_root;
}

QWidget *Window::widget() const
{
    return m_widget;
}

void Window::show()
{
    Application::sharedApplication().setKeyWindow(this);
    if (m_root)
        m_root->viewWillAppear(false);
    m_widget->show();
    if (m_root)
        m_root->viewDidAppear(false);
}

} // namespace bvt
