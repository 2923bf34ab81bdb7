#pragma once

/// \file
/// bvt::Screen, the phone's screen, and its orientations.

#include <Brevanti/brevanti_widgets_export.h>

#include <QObject>
#include <QRect>
#include <QSize>

#include <memory>

namespace bvt {

/// Which way a screen or a view is turned, told by its size.
enum class InterfaceOrientation {
    Portrait, ///< as high as wide, or higher
    Landscape ///< wider than high
};

/// The phone's screen. On a phone its bounds are the primary screen's; on a desktop, in the demo
/// and in tests a phone size is set (375 x 667 in portrait; swapping width and height turns it).
class BREVANTI_WIDGETS_EXPORT Screen : public QObject
{
    Q_OBJECT
public:
    /// The one screen.
    static Screen &mainScreen();
    Screen();
    ~Screen() override;

    QRect bounds() const;                     ///< origin (0, 0)
    void setPhoneSize(const QSize &size);     ///< an empty size goes back to the primary screen's
    InterfaceOrientation orientation() const; ///< landscape when wider than high

    /// The orientation of a size: landscape when wider than high.
    static InterfaceOrientation orientationOf(const QSize &size);

Q_SIGNALS:
    /// The bounds changed (setPhoneSize); windows and popup cards follow.
    void boundsChanged(const QRect &bounds);

private:
    class Private;
    const std::unique_ptr<Private> d;
};

} // namespace bvt
