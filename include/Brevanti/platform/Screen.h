#pragma once

#include <Brevanti/brevanti_widgets_export.h>

#include <QObject>
#include <QRect>
#include <QSize>

#include <memory>

namespace bvt {

enum class InterfaceOrientation { Portrait, Landscape };

// The phone's screen. On a phone its bounds are the primary screen's; on a desktop, in the demo and
// in tests a phone size is set (375 x 667 in portrait; swapping width and height turns it).
class BREVANTI_WIDGETS_EXPORT Screen : public QObject
{
    Q_OBJECT
public:
    static Screen &mainScreen();
    Screen();
    ~Screen() override;

    QRect bounds() const;                     // origin (0, 0)
    void setPhoneSize(const QSize &size);     // an empty size goes back to the primary screen's
    InterfaceOrientation orientation() const; // landscape when wider than high

    static InterfaceOrientation orientationOf(const QSize &size);

Q_SIGNALS:
    void boundsChanged(const QRect &bounds);

private:
    class Private;
    const std::unique_ptr<Private> d;
};

} // namespace bvt
