#pragma once

#include <Brevanti/brevanti_core_export.h>

#include <QLoggingCategory>
#include <QString>

namespace bvt {

// What a preference screen's switch does when the user flips it, in widgets and in QML: logs its
// new position and its keys, and sends the position to the service. A row whose document lacked a
// key cannot be sent; that is a warning in the screen's category, since an exception must not
// cross Qt's event loop.
BREVANTI_CORE_EXPORT void sendPreferenceSwitch(const QString &category, const QString &preference,
                                               bool on, const QLoggingCategory &screen);

} // namespace bvt
