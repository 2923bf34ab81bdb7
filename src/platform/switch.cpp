#include <Brevanti/platform/Switch.h>

#include <QPainter>
#include <QTimerEvent>

namespace bvt {

namespace {

const QSize switchSize(51, 31);
constexpr int thumbInset = 2;

} // namespace

class Switch::Private
{
public:
    QColor onTint = QColor::fromRgbF(0.3, 0.85, 0.39);
};

Switch::Switch(QWidget *parent) : QAbstractButton(parent), d(std::make_unique<Private>())
{
    setCheckable(true);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    resize(switchSize);
    // clicked comes after the checked state has flipped, and only from the user's side (mouse,
    // keyboard, click()), never from setChecked: exactly when valueChanged is due.
    connect(this, &QAbstractButton::clicked, this, &Switch::valueChanged);
}

Switch::~Switch() = default;

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
    return d->onTint;
}

void Switch::setOnTintColor(const QColor &color)
{
    d->onTint = color;
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
        painter.setBrush(d->onTint);
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

} // namespace bvt
