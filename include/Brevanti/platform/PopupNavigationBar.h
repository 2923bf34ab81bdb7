#pragma once

/// \file
/// bvt::PopupNavigationBar, the navigation bar of a popup card.

#include <Brevanti/brevanti_widgets_export.h>

#include <Brevanti/platform/NavigationBar.h>

#include <QColor>
#include <QFont>

namespace bvt {

/// The navigation bar of a popup card. Its look is process-wide: set appearance() once, before
/// presenting; every card presented afterwards uses it.
class BREVANTI_WIDGETS_EXPORT PopupNavigationBar : public NavigationBar
{
    Q_OBJECT
public:
    /// The colours a bar falls back on where the appearance leaves them invalid.
    enum class BarStyle {
        Default, ///< white bar, black title
        Black    ///< black bar, white title
    };
    /// The look of every popup bar made from now on.
    struct Appearance
    {
        QColor barTintColor; ///< invalid: white
        QColor tintColor;    ///< invalid: the system's blue
        /// The fallback for the colours left invalid.
        BarStyle barStyle = BarStyle::Default;
        QFont titleFont;   ///< the title text attributes
        QColor titleColor; ///< invalid: black
    };
    /// The process-wide look; BVTNotify::requestCustomPreferences sets it for each card.
    static Appearance &appearance();

    explicit PopupNavigationBar(QWidget *parent = nullptr); ///< takes the appearance as it is now
};

} // namespace bvt
