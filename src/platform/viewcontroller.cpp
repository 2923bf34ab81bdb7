#include <Brevanti/platform/ViewController.h>

#include <Brevanti/platform/NavigationController.h>
#include <Brevanti/platform/PopupController.h>

#include <QEvent>
#include <QResizeEvent>
#include <QWidget>

namespace bvt {

namespace {

// A container holds its controllers as their parent, but not every child is on its stack (one it
// presents is not).
template<typename Container>
Container *containerOf(const ViewController *controller)
{
    auto *container = qobject_cast<Container *>(controller->parent());
    return container && container->viewControllers().contains(controller) ? container : nullptr;
}

} // namespace

class ViewController::Private
{
public:
    QWidget *view = nullptr;
    NavigationItem navigationItem;
    QPointer<ViewController> presented;
    QPointer<ViewController> presenting;
    QSize contentSizeInPopup;
    QSize landscapeContentSizeInPopup;
};

ViewController::ViewController(QObject *parent)
    : QObject(parent), d(std::make_unique<Private>()) { }

ViewController::~ViewController()
{
    delete d->view;
}

QWidget *ViewController::view()
{
    if (!d->view) {
        loadView();
        viewDidLoad();
    }
    return d->view;
}

bool ViewController::isViewLoaded() const
{
    return d->view != nullptr;
}

QString ViewController::title() const
{
    return d->navigationItem.title;
}

void ViewController::setTitle(const QString &title)
{
    if (d->navigationItem.title == title)
        return;
    d->navigationItem.title = title;
    Q_EMIT titleChanged(title);
}

NavigationItem &ViewController::navigationItem()
{
    return d->navigationItem;
}

NavigationController *ViewController::navigationController() const
{
    return containerOf<NavigationController>(this);
}

PopupController *ViewController::popupController() const
{
    return containerOf<PopupController>(this);
}

ViewController *ViewController::presentedViewController() const
{
    return d->presented;
}

ViewController *ViewController::presentingViewController() const
{
    return d->presenting;
}

void ViewController::presentViewController(ViewController *controller, bool animated)
{
    controller->setParent(this);
    d->presented = controller;
    controller->d->presenting = this;

    QWidget *window = view()->window();
    QWidget *presentedView = controller->view();
    controller->viewWillAppear(animated);
    presentedView->setParent(window);
    presentedView->setGeometry(window->rect());
    // The presented view follows the window's size (see eventFilter).
    window->installEventFilter(this);
    presentedView->raise();
    presentedView->show();
    controller->viewDidAppear(animated);
}

void ViewController::dismissViewController(bool animated)
{
    // Like on the phone, a presented controller asks its presenter to dismiss it.
    if (!d->presented) {
        if (d->presenting)
            d->presenting->dismissViewController(animated);
        return;
    }
    ViewController *presented = d->presented;
    d->presented = nullptr;
    presented->d->presenting = nullptr;
    if (presented->d->view)
        presented->d->view->hide(); // and deleted with its controller
    presented->deleteLater();
}

QSize ViewController::contentSizeInPopup() const
{
    return d->contentSizeInPopup;
}

void ViewController::setContentSizeInPopup(const QSize &size)
{
    d->contentSizeInPopup = size;
}

QSize ViewController::landscapeContentSizeInPopup() const
{
    return d->landscapeContentSizeInPopup;
}

void ViewController::setLandscapeContentSizeInPopup(const QSize &size)
{
    d->landscapeContentSizeInPopup = size;
}

void ViewController::viewWillAppear(bool) { }

void ViewController::viewDidAppear(bool) { }

void ViewController::didRotateFromInterfaceOrientation(InterfaceOrientation) { }

void ViewController::loadView()
{
    auto *view = new QWidget;
    QPalette palette = view->palette();
    palette.setColor(QPalette::Window, Qt::white);
    view->setPalette(palette);
    view->setAutoFillBackground(true);
    // A new view fills the screen until its container gives it its place, as on a phone.
    view->resize(Screen::mainScreen().bounds().size());
    setView(view);
}

void ViewController::viewDidLoad() { }

void ViewController::setView(QWidget *view)
{
    d->view = view;
    view->installEventFilter(this);
    // A container's widget may delete the view before this controller goes.
    connect(view, &QObject::destroyed, this, [this, view] {
        if (d->view == view)
            d->view = nullptr;
    });
}

bool ViewController::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() != QEvent::Resize)
        return QObject::eventFilter(watched, event);
    const auto *resize = static_cast<QResizeEvent *>(event);
    // A view not yet shown reports no old size: that is its first layout, not a turn.
    if (watched == d->view && !resize->oldSize().isEmpty() && !resize->size().isEmpty()) {
        const InterfaceOrientation from = Screen::orientationOf(resize->oldSize());
        if (from != Screen::orientationOf(resize->size()))
            didRotateFromInterfaceOrientation(from);
    }
    if (d->presented && d->presented->d->view && watched == d->presented->d->view->parentWidget())
        d->presented->d->view->setGeometry(QRect(QPoint(0, 0), resize->size()));
    return QObject::eventFilter(watched, event);
}

} // namespace bvt
