#pragma once

#include <QAction>
#include <QPointer>
#include <QString>

namespace bvt {

// What a navigation bar shows for a controller: its title and an optional right-hand button (a
// QAction: its text is the button's title, triggered its tap).
class NavigationItem
{
public:
    QString title;
    QPointer<QAction> rightBarButtonItem;
};

} // namespace bvt
