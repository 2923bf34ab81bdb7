#include <Brevanti/platform/Screen.h>

#include <QGuiApplication>
#include <QScreen>

namespace bvt {

Screen &Screen::mainScreen()
{
    static Screen screen;
    return screen;
}

QRect Screen::bounds() const
{
    if (!m_phoneSize.isEmpty())
        return QRect(QPoint(0, 0), m_phoneSize);
    // Without an application there is no screen to ask.
    const QScreen *primary = QGuiApplication::primaryScreen();
    return primary ? QRect(QPoint(0, 0), primary->geometry().size()) : QRect();
}

void Screen::setPhoneSize(const QSize &size)
{
    const QRect before = bounds();
    m_phoneSize = size;
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
