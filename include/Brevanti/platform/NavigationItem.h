#pragma once

/// \file
/// bvt::NavigationItem, what a navigation bar shows for a controller.

#include <Brevanti/brevanti_widgets_export.h>

#include <QAction>
#include <QPointer>
#include <QString>

namespace bvt {

/// What a navigation bar shows for a controller: its title and an optional right-hand button (a
/// QAction: its text is the button's title, triggered its tap).
class BREVANTI_WIDGETS_EXPORT NavigationItem
{
public:
    QString title;                        ///< the bar's title (ViewController::setTitle sets it)
    QPointer<QAction> rightBarButtonItem; ///< the right-hand button; null for none
};

} // namespace bvt
