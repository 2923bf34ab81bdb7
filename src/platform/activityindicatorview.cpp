#include <Brevanti/platform/ActivityIndicatorView.h>

#include <QPainter>
#include <QTimerEvent>

namespace bvt {

namespace {

constexpr int spokeCount = 12;

} // namespace

class ActivityIndicatorView::Private
{
public:
    int timer = 0;
    int step = 0;
};

ActivityIndicatorView::ActivityIndicatorView(QWidget *parent)
    : QWidget(parent), d(std::make_unique<Private>())
{
    setFixedSize(20, 20);
}

ActivityIndicatorView::~ActivityIndicatorView() = default;

void ActivityIndicatorView::startAnimating()
{
    if (!d->timer)
        d->timer = startTimer(80);
}

void ActivityIndicatorView::stopAnimating()
{
    if (d->timer) {
        killTimer(d->timer);
        d->timer = 0;
    }
}

bool ActivityIndicatorView::isAnimating() const
{
    return d->timer != 0;
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
        painter.rotate((d->step - behind) * 360.0 / spokeCount);
        painter.setPen(pen);
        painter.drawLine(QPointF(0, -4.5), QPointF(0, -8.5));
        painter.restore();
    }
}

void ActivityIndicatorView::timerEvent(QTimerEvent *event)
{
    if (event->timerId() != d->timer) {
        QWidget::timerEvent(event);
        return;
    }
    d->step = (d->step + 1) % spokeCount;
    update();
}

} // namespace bvt
