#include <Brevanti/platform/ActivityIndicatorView.h>

#include <QPainter>
#include <QTimerEvent>

namespace bvt {

namespace {

constexpr int spokeCount = 12;

} // namespace

ActivityIndicatorView::ActivityIndicatorView(QWidget *parent) : QWidget(parent)
{
    setFixedSize(20, 20);
}

void ActivityIndicatorView::startAnimating()
{
    if (!m_timer)
        m_timer = startTimer(80);
}

void ActivityIndicatorView::stopAnimating()
{
    if (m_timer) {
        killTimer(m_timer);
        m_timer = 0;
    }
}

bool ActivityIndicatorView::isAnimating() const
{
    return m_timer != 0;
}

void ActivityIndicatorView::setCenter(const QPoint &center)
{
    move(center - QPoint(width() / 2, height() / 2));
}

QPoint ActivityIndicatorView::center() const
{
    // Not geometry().center(), which is off by one for even sizes and would not round-trip.
    return pos() + QPoint(width() / 2, height() / 2);
}

void ActivityIndicatorView::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(QRectF(rect()).center());
    const double scale = qMin(width(), height()) / 20.0;
    painter.scale(scale, scale);
    QPen pen(Qt::gray, 2, Qt::SolidLine, Qt::RoundCap);
    // The leading spoke is the darkest; the ones behind it fade out.
    for (int behind = 0; behind < spokeCount; ++behind) {
        QColor color = QColor::fromRgbF(0.45, 0.45, 0.47);
        color.setAlphaF(1.0 - 0.85 * behind / spokeCount);
        pen.setColor(color);
        painter.save();
        painter.rotate((m_step - behind) * 360.0 / spokeCount);
        painter.setPen(pen);
        painter.drawLine(QPointF(0, -4.5), QPointF(0, -8.5));
        painter.restore();
    }
}

void ActivityIndicatorView::timerEvent(QTimerEvent *event)
{
    if (event->timerId() != m_timer) {
        QWidget::timerEvent(event);
        return;
    }
    m_step = (m_step + 1) % spokeCount;
    update();
}

} // namespace bvt
