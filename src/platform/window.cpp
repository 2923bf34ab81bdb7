#include <Brevanti/platform/Screen.h>
#include <Brevanti/platform/Window.h>

#include <QPointer>
#include <QVBoxLayout>
#include <QWidget>

namespace bvt {

namespace {

QPointer<Window> &current()
{
    static QPointer<Window> window;
    return window;
}

} // namespace

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
    // The root first, so that it takes its view (and the views presented over it) itself.
    delete m_root.data();
    delete m_widget;
}

void Window::setRootViewController(ViewController *root)
{
    if (root == m_root)
        return;
    delete m_root.data();
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
    current() = this;
    if (m_root)
        m_root->viewWillAppear(false);
    m_widget->show();
    if (m_root)
        m_root->viewDidAppear(false);
}

Window *Window::keyWindow()
{
    return current();
}

} // namespace bvt
