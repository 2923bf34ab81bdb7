#include <Brevanti/Switch.h>

#include <QPainter>
#include <QTimerEvent>

namespace bvt {

namespace {

const QSize switchSize(51, 31);
constexpr int thumbInset = 2;
constexpr int spokeCount = 12;
const char tagProperty[] = "bvtTag";

} // namespace

Switch::Switch(QWidget *parent)
    : QAbstractButton(parent), m_onTint(QColor::fromRgbF(0.3, 0.85, 0.39))
{
    setCheckable(true);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    resize(switchSize);
    // clicked comes after the checked state has flipped, and only from the user's side (mouse,
    // keyboard, click()), never from setChecked: exactly when valueChanged is due.
    connect(this, &QAbstractButton::clicked, this, &Switch::valueChanged);
}

bool Switch::isOn() const
{
    return isChecked();
}

void Switch::setOn(bool on, bool animated)
{
    Q_UNUSED(animated); // the thumb jumps; there is no animation to skip
    setChecked(on);
}

QColor Switch::onTintColor() const
{
    return m_onTint;
}

void Switch::setOnTintColor(const QColor &color)
{
    m_onTint = color;
    update();
}

QSize Switch::sizeHint() const
{
    return switchSize;
}

void Switch::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    if (!isEnabled())
        painter.setOpacity(0.5);

    // The track keeps its phone size and sits centred when the widget is given more room.
    QRectF track(QPointF(0, 0), QSizeF(switchSize));
    track.moveCenter(QRectF(rect()).center());
    const double radius = track.height() / 2;
    if (isOn()) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(m_onTint);
        painter.drawRoundedRect(track, radius, radius);
    } else {
        painter.setPen(QPen(QColor::fromRgbF(0.9, 0.9, 0.92), 1.5));
        painter.setBrush(Qt::white);
        painter.drawRoundedRect(track.adjusted(0.75, 0.75, -0.75, -0.75), radius - 0.75,
                                radius - 0.75);
    }

    const double diameter = track.height() - 2 * thumbInset;
    const double x = isOn() ? track.right() - thumbInset - diameter : track.left() + thumbInset;
    const QRectF thumb(x, track.top() + thumbInset, diameter, diameter);
    // A soft shadow: a few widening, faint rings dropped slightly below the thumb.
    painter.setPen(Qt::NoPen);
    for (int ring = 3; ring >= 1; --ring) {
        painter.setBrush(QColor(0, 0, 0, 18));
        painter.drawEllipse(thumb.translated(0, 1.5).adjusted(-ring * 0.5, -ring * 0.5, ring * 0.5,
                                                              ring * 0.5));
    }
    painter.setBrush(Qt::white);
    painter.drawEllipse(thumb);
}

bool Switch::hitButton(const QPoint &pos) const
{
    return rect().contains(pos);
}

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

void setViewTag(QWidget *view, int tag)
{
    view->setProperty(tagProperty, tag);
}

int viewTag(const QWidget *view)
{
    return view->property(tagProperty).toInt();
}

QWidget *viewWithTag(QWidget *root, int tag)
{
    if (!root)
        return nullptr;
    if (viewTag(root) == tag)
        return root;
    const QList<QWidget *> descendants = root->findChildren<QWidget *>();
    for (QWidget *view : descendants) {
        if (viewTag(view) == tag)
            return view;
    }
    return nullptr;
}

} // namespace bvt
