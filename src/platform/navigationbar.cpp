#include <Brevanti/platform/NavigationBar.h>

#include <QLabel>
#include <QPainter>
#include <QToolButton>

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

class NavigationBar::Private
{
public:
    explicit Private(NavigationBar *bar) : title(new QLabel(bar)), right(new QToolButton(bar)) { }

    QLabel *const title;
    QToolButton *const right;
    QColor barTint = Qt::white;
};

NavigationBar::NavigationBar(QWidget *parent) : QWidget(parent), d(std::make_unique<Private>(this))
{
    setFixedHeight(height);
    QFont font = d->title->font();
    font.setBold(true);
    font.setPixelSize(17);
    d->title->setFont(font);
    d->title->setAlignment(Qt::AlignCenter);
    d->right->setAutoRaise(true);
    d->right->hide();
    setTintColor(QColor::fromRgbF(0, 0.48f, 1));
}

NavigationBar::~NavigationBar() = default;

void NavigationBar::setItem(const NavigationItem &item)
{
    d->title->setText(item.title);
    QAction *action = item.rightBarButtonItem;
    QAction *previous = d->right->defaultAction();
    if (previous && previous != action) {
        disconnect(previous, &QAction::changed, this, nullptr);
        d->right->removeAction(previous);
    }
    if (action && action != previous) {
        d->right->setDefaultAction(action);
        // A new text changes the button's width.
        connect(action, &QAction::changed, this,
                [this] { placeBarChildren(size(), d->title, d->right); });
    }
    d->right->setVisible(action != nullptr);
    placeBarChildren(size(), d->title, d->right);
}

QString NavigationBar::title() const
{
    return d->title->text();
}

QToolButton *NavigationBar::rightButton() const
{
    return d->right;
}

void NavigationBar::setBarTintColor(const QColor &color)
{
    d->barTint = color;
    update();
}

void NavigationBar::setTintColor(const QColor &color)
{
    setTextColor(d->right, color);
}

void NavigationBar::setTitleFont(const QFont &font)
{
    d->title->setFont(font);
}

void NavigationBar::setTitleColor(const QColor &color)
{
    setTextColor(d->title, color);
}

void NavigationBar::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.fillRect(rect(), d->barTint);
    painter.fillRect(0, rect().bottom(), width(), 1, QColor::fromRgbF(0.8f, 0.8f, 0.8f));
}

void NavigationBar::resizeEvent(QResizeEvent *)
{
    placeBarChildren(size(), d->title, d->right);
}

} // namespace bvt
