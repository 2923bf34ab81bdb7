#include <Brevanti/platform/PopupController.h>

#include "platform/controllerstack.h"

#include <QEvent>
#include <QPainter>
#include <QPainterPath>

namespace bvt {

namespace {

// The card: a rounded rectangle whose mask also clips the bar and content to the corners.
class PopupCard : public QWidget
{
public:
    PopupCard(double radius, const QColor &color, QWidget *parent)
        : QWidget(parent), m_radius(radius), m_color(color)
    { }

    void setColor(const QColor &color)
    {
        m_color = color;
        update();
    }

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
        painter.setBrush(m_color);
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
    QColor m_color;
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

class PopupController::Private
{
public:
    explicit Private(PopupController *popup)
        : popup(popup), controllers(popup, [this] { showTop(false); })
    { }

    void layoutCard();
    void showTop(bool animated);

    PopupController *const popup;
    ControllerStack controllers;
    // In the presenting window once presented, which may take them with it when it goes first.
    QPointer<QWidget> background;
    QPointer<QWidget> container;
    QPointer<PopupNavigationBar> bar;
    QPointer<QWidget> content;
    bool barHidden = false;
    double cornerRadius = 4;
    QColor cardColor = Qt::white;
};

PopupController::PopupController(ViewController *root, QObject *parent)
    : QObject(parent), d(std::make_unique<Private>(this))
{
    pushViewController(root, false);
}

PopupController::~PopupController()
{
    delete d->background.data();
    delete d->container.data();
}

QList<ViewController *> PopupController::viewControllers() const
{
    return d->controllers.controllers();
}

ViewController *PopupController::topViewController() const
{
    return d->controllers.top();
}

void PopupController::pushViewController(ViewController *controller, bool animated)
{
    d->controllers.push(controller);
    d->showTop(animated);
}

void PopupController::presentInViewController(ViewController *presenting)
{
    if (d->container)
        return;
    QWidget *window = presenting->view()->window();

    if (!d->background) {
        d->background = new QWidget;
        // Kept in the palette so that a caller can change the dimming colour.
        QPalette palette = d->background->palette();
        palette.setColor(QPalette::Window, QColor::fromRgbF(0, 0, 0, 0.5f));
        d->background->setPalette(palette);
        d->background->setAutoFillBackground(true);
    }
    const QRect frame = d->background->geometry();
    d->background->setParent(window);
    d->background->setGeometry(frame);

    d->container = new PopupCard(d->cornerRadius, d->cardColor, window);
    d->bar = new PopupNavigationBar(d->container);
    d->bar->setVisible(!d->barHidden);
    d->content = new QWidget(d->container);
    d->controllers.setBar(d->bar);

    window->installEventFilter(this);
    connect(&Screen::mainScreen(), &Screen::boundsChanged, this, [this] { d->layoutCard(); });

    // Still hidden, so showTop leaves the hooks to the lines below.
    d->showTop(false);
    ViewController *top = topViewController();
    top->viewWillAppear(false);
    d->background->raise();
    d->background->show();
    d->container->raise();
    d->container->show();
    top->viewDidAppear(false);
}

void PopupController::dismiss()
{
    const bool wasPresented = isPresented();
    // Out of sight now; they go with this controller.
    if (d->background)
        d->background->hide();
    if (d->container)
        d->container->hide();
    if (wasPresented)
        Q_EMIT dismissed();
    deleteLater();
}

bool PopupController::isPresented() const
{
    return d->container && !d->container->isHidden();
}

void PopupController::setNavigationBarHidden(bool hidden, bool)
{
    d->barHidden = hidden;
    if (d->bar)
        d->bar->setVisible(!hidden);
    d->layoutCard();
}

bool PopupController::isNavigationBarHidden() const
{
    return d->barHidden;
}

QWidget *PopupController::backgroundView() const
{
    return d->background;
}

QWidget *PopupController::containerView() const
{
    return d->container;
}

PopupNavigationBar *PopupController::navigationBar() const
{
    return d->bar;
}

QColor PopupController::cardColor() const
{
    return d->cardColor;
}

void PopupController::setCardColor(const QColor &color)
{
    d->cardColor = color;
    if (d->container)
        static_cast<PopupCard *>(d->container.data())->setColor(color);
}

double PopupController::cornerRadius() const
{
    return d->cornerRadius;
}

void PopupController::setCornerRadius(double radius)
{
    d->cornerRadius = radius;
    if (d->container)
        static_cast<PopupCard *>(d->container.data())->setRadius(radius);
}

bool PopupController::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::Resize && d->container && watched == d->container->parentWidget())
        d->layoutCard();
    return QObject::eventFilter(watched, event);
}

void PopupController::Private::layoutCard()
{
    ViewController *top = popup->topViewController();
    if (!container || !top)
        return;
    const QWidget *window = container->parentWidget();
    if (background)
        background->setGeometry(window->rect());

    QSize size = top->contentSizeInPopup();
    // A controller with no landscape size keeps its portrait one.
    if (Screen::mainScreen().orientation() == InterfaceOrientation::Landscape
        && !top->landscapeContentSizeInPopup().isEmpty())
        size = top->landscapeContentSizeInPopup();
    const int barHeight = barHidden ? 0 : NavigationBar::height;

    const QSize card(size.width(), size.height() + barHeight);
    container->setGeometry(QRect(
            QPoint((window->width() - card.width()) / 2, (window->height() - card.height()) / 2),
            card));
    bar->setGeometry(0, 0, size.width(), barHeight);
    content->setGeometry(0, barHeight, size.width(), size.height());
    if (top->isViewLoaded())
        top->view()->setGeometry(content->rect());
}

void PopupController::Private::showTop(bool animated)
{
    if (!container)
        return;
    controllers.showTop(animated, popup->isPresented(), [this](QWidget *view) {
        // The controllers below keep their views in the card, out of sight.
        for (ViewController *controller : controllers.controllers()) {
            if (controller->isViewLoaded() && controller->view() != view)
                controller->view()->hide();
        }
        if (view->parentWidget() != content)
            view->setParent(content);
        layoutCard();
        view->show();
    });
}

void PopupController::setBackgroundView(QWidget *view)
{
    if (d->container || !view)
        return; // the background of a card on screen stays
    delete d->background.data();
    d->background = view;
}

ViewController *PopupController::popViewControllerAnimated(bool animated)
{
    ViewController *popped = d->controllers.pop();
    if (popped)
        d->showTop(animated);
    return popped;
}

} // namespace bvt
