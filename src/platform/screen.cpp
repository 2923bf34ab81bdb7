#include <Brevanti/platform/Screen.h>

#include <QGuiApplication>
#include <QScreen>

namespace bvt {

class Screen::Private
{
public:
    QSize phoneSize;
};

Screen &Screen::mainScreen()
{
    static Screen screen;
    return screen;
}

Screen::Screen() : d(std::make_unique<Private>()) { }

Screen::~Screen() = default;

QRect Screen::bounds() const
{
    if (!d->phoneSize.isEmpty())
        return QRect(QPoint(0, 0), d->phoneSize);
    // Without an application there is no screen to ask.
    const QScreen *primary = QGuiApplication::primaryScreen();
    return primary ? QRect(QPoint(0, 0), primary->geometry().size()) : QRect();
}

void Screen::setPhoneSize(const QSize &size)
{
    const QRect before = bounds();
    d->phoneSize = size;
    const QRect after = bounds();
    if (after != before)
        Q_EMIT boundsChanged(after);
}

InterfaceOrientation Screen::orientation() const
{
    return orientationOf(bounds().size());
}

InterfaceOrientation Screen::orientationOf(const QSize &size)
{
    return size.width() > size.height() ? InterfaceOrientation::Landscape
                                        : InterfaceOrientation::Portrait;
}

} // namespace bvt
