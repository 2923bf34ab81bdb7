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

} // namespace bvt
