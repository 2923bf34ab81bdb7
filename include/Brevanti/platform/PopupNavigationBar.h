#pragma once

#include <Brevanti/brevanti_widgets_export.h>

#include <Brevanti/platform/NavigationBar.h>

#include <QColor>
#include <QFont>

namespace bvt {

// The navigation bar of a popup card. Its look is process-wide: set appearance() once, before
// presenting; every card presented afterwards uses it.
class BREVANTI_WIDGETS_EXPORT PopupNavigationBar : public NavigationBar
{
    Q_OBJECT
public:
    enum class BarStyle { Default, Black };
    struct Appearance
    {
        QColor barTintColor; // invalid: white
        QColor tintColor;    // invalid: the system's blue
        BarStyle barStyle = BarStyle::Default;
        QFont titleFont;   // the title text attributes
        QColor titleColor; // invalid: black
    };
    static Appearance &appearance();

    explicit PopupNavigationBar(QWidget *parent = nullptr); // takes the appearance as it is now
};

} // namespace bvt
