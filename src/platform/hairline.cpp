#include "platform/hairline.h"

#include <QEvent>
#include <QPainter>
#include <QtMath>

namespace bvt {

Hairline::Hairline(QWidget *owner, const QColor &color, qreal thickness, Placement placement)
    : m_owner(owner), m_color(color), m_thickness(thickness), m_placement(placement)
{
    setAttribute(Qt::WA_TransparentForMouseEvents);
    hide();
    owner->installEventFilter(this);
    connect(owner, &QObject::destroyed, this, &QObject::deleteLater);
    if (owner->parentWidget())
        adoptParent();
    if (owner->isVisible())
        showWithOwner();
}

void Hairline::setInset(const QMargins &inset)
{
    m_inset = inset;
    follow();
}

void Hairline::setColor(const QColor &color)
{
    m_color = color;
    update();
}

void Hairline::setSuppressed(bool suppressed)
{
    if (suppressed == m_suppressed)
        return;
    m_suppressed = suppressed;
    if (suppressed)
        hide();
    else if (m_owner->isVisible())
        showWithOwner();
}

bool Hairline::eventFilter(QObject *watched, QEvent *event)
{
    if (watched != m_owner) {
        if (event->type() == QEvent::ChildAdded)
            raise();
        return false;
    }
    switch (event->type()) {
    case QEvent::ParentChange:
        adoptParent();
        break;
    case QEvent::Move:
    case QEvent::Resize:
        follow();
        break;
    case QEvent::Show:
        showWithOwner();
        break;
    case QEvent::Hide:
        hide();
        break;
    default:
        break;
    }
    return false;
}

void Hairline::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.fillRect(QRectF(0, 0, width(), m_thickness), m_color);
}

void Hairline::adoptParent()
{
    if (parentWidget())
        parentWidget()->removeEventFilter(this);
    setParent(m_owner->parentWidget());
    if (parentWidget())
        parentWidget()->installEventFilter(this);
}

void Hairline::follow()
{
    const QRect owner = m_owner->geometry();
    // Inside, the line is no taller than its owner, so an owner without height shows none.
    const int height = m_placement == Placement::Inside ? qMin(qCeil(m_thickness), owner.height())
                                                        : qCeil(m_thickness);
    const int top = owner.y() + owner.height() - (m_placement == Placement::Inside ? height : 0);
    setGeometry(owner.x() + m_inset.left(), top,
                qMax(0, owner.width() - m_inset.left() - m_inset.right()), height);
}

void Hairline::showWithOwner()
{
    follow();
    // A line without a parent would be a window of its own.
    if (m_suppressed || !parentWidget())
        return;
    show();
    raise();
}

} // namespace bvt
