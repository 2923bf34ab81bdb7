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

ViewController::ViewController(QObject *parent) : QObject(parent) { }

ViewController::~ViewController()
{
    delete m_view;
}

QWidget *ViewController::view()
{
    if (!m_view) {
        loadView();
        viewDidLoad();
    }
    return m_view;
}

bool ViewController::isViewLoaded() const
{
    return m_view != nullptr;
}

QString ViewController::title() const
{
    return m_navigationItem.title;
}

void ViewController::setTitle(const QString &title)
{
    if (m_navigationItem.title == title)
        return;
    m_navigationItem.title = title;
    Q_EMIT titleChanged(title);
}

NavigationItem &ViewController::navigationItem()
{
    return m_navigationItem;
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
    return m_presented;
}

ViewController *ViewController::presentingViewController() const
{
    return m_presenting;
}

void ViewController::presentViewController(ViewController *controller, bool animated)
{
    controller->setParent(this);
    m_presented = controller;
    controller->m_presenting = this;

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
    if (!m_presented) {
        if (m_presenting)
            m_presenting->dismissViewController(animated);
        return;
    }
    ViewController *presented = m_presented;
    m_presented = nullptr;
    presented->m_presenting = nullptr;
    if (presented->m_view)
        presented->m_view->hide(); // and deleted with its controller
    presented->deleteLater();
}

QSize ViewController::contentSizeInPopup() const
{
    return m_contentSizeInPopup;
}

void ViewController::setContentSizeInPopup(const QSize &size)
{
    m_contentSizeInPopup = size;
}

QSize ViewController::landscapeContentSizeInPopup() const
{
    return m_landscapeContentSizeInPopup;
}

void ViewController::setLandscapeContentSizeInPopup(const QSize &size)
{
    m_landscapeContentSizeInPopup = size;
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
    m_view = view;
    view->installEventFilter(this);
    // A container's widget may delete the view before this controller goes.
    connect(view, &QObject::destroyed, this, [this, view] {
        if (m_view == view)
            m_view = nullptr;
    });
}

bool ViewController::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() != QEvent::Resize)
        return QObject::eventFilter(watched, event);
    const auto *resize = static_cast<QResizeEvent *>(event);
    // A view not yet shown reports no old size: that is its first layout, not a turn.
    if (watched == m_view && !resize->oldSize().isEmpty() && !resize->size().isEmpty()) {
        const InterfaceOrientation from = Screen::orientationOf(resize->oldSize());
        if (from != Screen::orientationOf(resize->size()))
            didRotateFromInterfaceOrientation(from);
    }
    if (m_presented && m_presented->m_view && watched == m_presented->m_view->parentWidget())
        m_presented->m_view->setGeometry(QRect(QPoint(0, 0), resize->size()));
    return QObject::eventFilter(watched, event);
}

} // namespace bvt
