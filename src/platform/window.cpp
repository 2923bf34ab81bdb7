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

class Window::Private
{
public:
    QWidget *const widget = new QWidget;
    QPointer<ViewController> root;
};

Window::Window(QObject *parent) : QObject(parent), d(std::make_unique<Private>())
{
    auto *layout = new QVBoxLayout(d->widget);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    // The screen sets the window's size, whatever its content asks for.
    layout->setSizeConstraint(QLayout::SetNoConstraint);
    d->widget->resize(Screen::mainScreen().bounds().size());
    connect(&Screen::mainScreen(), &Screen::boundsChanged, this,
            [this](const QRect &bounds) { d->widget->resize(bounds.size()); });
}

Window::~Window()
{
    // The root first, so that it takes its view (and the views presented over it) itself.
    delete d->root.data();
    delete d->widget;
}

void Window::setRootViewController(ViewController *root)
{
    if (root == d->root)
        return;
    delete d->root.data();
    d->root = root;
    if (!root)
        return;
    root->setParent(this);
    d->widget->layout()->addWidget(root->view());
}

ViewController *Window::rootViewController() const
{
    return d->root;
}

QWidget *Window::widget() const
{
    return d->widget;
}

void Window::show()
{
    current() = this;
    if (d->root)
        d->root->viewWillAppear(false);
    d->widget->show();
    if (d->root)
        d->root->viewDidAppear(false);
}

Window *Window::keyWindow()
{
    return current();
}

} // namespace bvt
