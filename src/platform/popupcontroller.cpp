#include <Brevanti/platform/PopupController.h>

#include "platform/controllerstack.h"

#include <QEvent>
#include <QPainter>
#include <QPainterPath>

namespace bvt {

namespace {

// The card: a white rounded rectangle whose mask also clips the bar and content to the corners.
class PopupCard : public QWidget
{
public:
    PopupCard(double radius, QWidget *parent) : QWidget(parent), m_radius(radius) { }

    void setRadius(double radius)
    {
        m_radius = radius;
        updateMask();
        update();
    }

protected:
    void paintEvent(QPaintEvent *) override
    {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(Qt::white);
        painter.drawRoundedRect(rect(), m_radius, m_radius);
    }

    void resizeEvent(QResizeEvent *) override { updateMask(); }

private:
    void updateMask()
    {
        QPainterPath path;
        path.addRoundedRect(rect(), m_radius, m_radius);
        setMask(QRegion(path.toFillPolygon().toPolygon()));
    }

    double m_radius;
};

} // namespace

PopupNavigationBar::Appearance &PopupNavigationBar::appearance()
{
    static Appearance appearance;
    return appearance;
}

PopupNavigationBar::PopupNavigationBar(QWidget *parent) : NavigationBar(parent)
{
    const Appearance &look = appearance();
    const bool black = look.barStyle == BarStyle::Black;
    if (look.barTintColor.isValid())
        setBarTintColor(look.barTintColor);
    else
        setBarTintColor(black ? Qt::black : Qt::white);
    setTintColor(look.tintColor.isValid() ? look.tintColor : QColor::fromRgbF(0, 0.48f, 1));
    // A font nobody touched has no resolved attributes: the bar's own default then.
    if (look.titleFont.resolveMask() != 0)
        setTitleFont(look.titleFont);
    if (look.titleColor.isValid())
        setTitleColor(look.titleColor);
    else
        setTitleColor(black ? Qt::white : Qt::black);
}

PopupController::PopupController(ViewController *root, QObject *parent)
    : QObject(parent),
      m_controllers(std::make_unique<ControllerStack>(this, [this] { showTop(false); }))
{
    pushViewController(root, false);
}

PopupController::~PopupController()
{
    delete m_background.data();
    delete m_container.data();
}

QList<ViewController *> PopupController::viewControllers() const
{
    return m_controllers->controllers();
}

ViewController *PopupController::topViewController() const
{
    return m_controllers->top();
}

void PopupController::pushViewController(ViewController *controller, bool animated)
{
    m_controllers->push(controller);
    showTop(animated);
}

void PopupController::presentInViewController(ViewController *presenting)
{
    if (m_container)
        return;
    QWidget *window = presenting->view()->window();

    if (!m_background) {
        m_background = new QWidget;
        // Kept in the palette so that a caller can change the dimming colour.
        QPalette palette = m_background->palette();
        palette.setColor(QPalette::Window, QColor::fromRgbF(0, 0, 0, 0.5f));
        m_background->setPalette(palette);
        m_background->setAutoFillBackground(true);
    }
    const QRect frame = m_background->geometry();
    m_background->setParent(window);
    m_background->setGeometry(frame);

    m_container = new PopupCard(m_cornerRadius, window);
    m_bar = new PopupNavigationBar(m_container);
    m_bar->setVisible(!m_barHidden);
    m_content = new QWidget(m_container);
    m_controllers->setBar(m_bar);

    window->installEventFilter(this);
    connect(&Screen::mainScreen(), &Screen::boundsChanged, this, &PopupController::layoutCard);

    // Still hidden, so showTop leaves the hooks to the lines below.
    showTop(false);
    ViewController *top = topViewController();
    top->viewWillAppear(false);
    m_background->raise();
    m_background->show();
    m_container->raise();
    m_container->show();
    top->viewDidAppear(false);
}

void PopupController::dismiss()
{
    const bool wasPresented = isPresented();
    // Out of sight now; they go with this controller.
    if (m_background)
        m_background->hide();
    if (m_container)
        m_container->hide();
    if (wasPresented)
        Q_EMIT dismissed();
    deleteLater();
}

bool PopupController::isPresented() const
{
    return m_container && !m_container->isHidden();
}

void PopupController::setNavigationBarHidden(bool hidden, bool)
{
    m_barHidden = hidden;
    if (m_bar)
        m_bar->setVisible(!hidden);
    layoutCard();
}

bool PopupController::isNavigationBarHidden() const
{
    return m_barHidden;
}

QWidget *PopupController::backgroundView() const
{
    return m_background;
}

QWidget *PopupController::containerView() const
{
    return m_container;
}

PopupNavigationBar *PopupController::navigationBar() const
{
    return m_bar;
}

double PopupController::cornerRadius() const
{
    return m_cornerRadius;
}

void PopupController::setCornerRadius(double radius)
{
    m_cornerRadius = radius;
    if (m_container)
        static_cast<PopupCard *>(m_container.data())->setRadius(radius);
}

bool PopupController::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::Resize && m_container && watched == m_container->parentWidget())
        layoutCard();
    return QObject::eventFilter(watched, event);
}

void PopupController::layoutCard()
{
    ViewController *top = topViewController();
    if (!m_container || !top)
        return;
    const QWidget *window = m_container->parentWidget();
    if (m_background)
        m_background->setGeometry(window->rect());

    QSize content = top->contentSizeInPopup();
    // A controller with no landscape size keeps its portrait one.
    if (Screen::mainScreen().orientation() == InterfaceOrientation::Landscape
        && !top->landscapeContentSizeInPopup().isEmpty())
        content = top->landscapeContentSizeInPopup();
    const int barHeight = m_barHidden ? 0 : NavigationBar::height;

    const QSize card(content.width(), content.height() + barHeight);
    m_container->setGeometry(QRect(
            QPoint((window->width() - card.width()) / 2, (window->height() - card.height()) / 2),
            card));
    m_bar->setGeometry(0, 0, content.width(), barHeight);
    m_content->setGeometry(0, barHeight, content.width(), content.height());
    if (top->isViewLoaded())
        top->view()->setGeometry(m_content->rect());
}

void PopupController::showTop(bool animated)
{
    if (!m_container)
        return;
    m_controllers->showTop(animated, isPresented(), [this](QWidget *view) {
        // The controllers below keep their views in the card, out of sight.
        for (ViewController *controller : viewControllers()) {
            if (controller->isViewLoaded() && controller->view() != view)
                controller->view()->hide();
        }
        if (view->parentWidget() != m_content)
            view->setParent(m_content);
        layoutCard();
        view->show();
    });
}

void PopupController::setBackgroundView(QWidget *view)
{
    if (m_container || !view)
        return; // the background of a card on screen stays
    delete m_background.data();
    m_background = view;
}

ViewController *PopupController::popViewControllerAnimated(bool animated)
{
    ViewController *popped = m_controllers->pop();
    if (popped)
        showTop(animated);
    return popped;
}

} // namespace bvt
