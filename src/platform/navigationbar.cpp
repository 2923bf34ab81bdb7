#include <Brevanti/platform/NavigationBar.h>

#include <QCoreApplication>
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

// The title is centred on the whole bar, so it keeps clear of the wider button on both sides.
void placeBarChildren(const QSize &size, QLabel *title, QToolButton *back, QToolButton *right)
{
    const auto widthOf = [](QToolButton *button) {
        return button->isHidden() ? 0 : button->sizeHint().width();
    };
    back->setGeometry(sideMargin, 0, widthOf(back), size.height());
    right->setGeometry(size.width() - sideMargin - widthOf(right), 0, widthOf(right),
                       size.height());
    const int buttonWidth = qMax(widthOf(back), widthOf(right));
    const int inset = sideMargin + buttonWidth + (buttonWidth ? sideMargin : 0);
    title->setGeometry(inset, 0, qMax(0, size.width() - 2 * inset), size.height());
}

} // namespace

class NavigationBar::Private
{
public:
    explicit Private(NavigationBar *bar)
        : title(new QLabel(bar)), back(new QToolButton(bar)), right(new QToolButton(bar))
    { }

    void place(const QSize &size)
    {
        // The title keeps its whole width: a back title that would crowd it is cut short.
        if (!back->isHidden()) {
            const int room = (size.width() - title->sizeHint().width()) / 2 - 2 * sideMargin;
            back->setText(backText);
            const int padding =
                    back->sizeHint().width() - back->fontMetrics().horizontalAdvance(backText);
            back->setText(back->fontMetrics().elidedText(backText, Qt::ElideRight,
                                                         qMax(0, room - padding)));
        }
        placeBarChildren(size, title, back, right);
    }

    QLabel *const title;
    QToolButton *const back;
    QToolButton *const right;
    QString backText; // as it reads when there is room
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
    d->back->setAutoRaise(true);
    d->back->hide();
    setTintColor(QColor::fromRgbF(0, 0.48f, 1));
    // On the white bar, whatever the application's palette says (a dark one has a light text).
    setTitleColor(Qt::black);
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
        connect(action, &QAction::changed, this, [this] { d->place(size()); });
    }
    d->right->setVisible(action != nullptr);
    d->place(size());
}

QString NavigationBar::title() const
{
    return d->title->text();
}

QToolButton *NavigationBar::rightButton() const
{
    return d->right;
}

void NavigationBar::setBackTitle(const QString &title)
{
    d->backText = QStringLiteral("\u2039 ")
            + (title.isEmpty() ? QCoreApplication::translate("NavigationBar", "Back") : title);
    d->back->setVisible(!title.isNull());
    d->place(size());
}

QToolButton *NavigationBar::backButton() const
{
    return d->back;
}

void NavigationBar::setBarTintColor(const QColor &color)
{
    d->barTint = color;
    update();
}

void NavigationBar::setTintColor(const QColor &color)
{
    setTextColor(d->right, color);
    setTextColor(d->back, color);
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
    d->place(size());
}

} // namespace bvt
