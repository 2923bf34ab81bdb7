#pragma once

#include "core/internalexport.h"

#include <QString>
#include <QVariant>

// The three identifiers kept in the application's settings between launches: the device's (written
// once), the assigned user's and the accepted push token. Each write is logged, then announced.
namespace bvt::identifiers {

BREVANTI_CORE_INTERNAL_EXPORT QString deviceId();
BREVANTI_CORE_INTERNAL_EXPORT void setDeviceId(const QVariant &identifier);
BREVANTI_CORE_INTERNAL_EXPORT void clearDeviceId();
BREVANTI_CORE_INTERNAL_EXPORT QString userId();
BREVANTI_CORE_INTERNAL_EXPORT void setUserId(const QVariant &identifier);
BREVANTI_CORE_INTERNAL_EXPORT void clearUserId();
BREVANTI_CORE_INTERNAL_EXPORT QString deviceToken();
BREVANTI_CORE_INTERNAL_EXPORT void setDeviceToken(const QVariant &token);
BREVANTI_CORE_INTERNAL_EXPORT void clearDeviceToken();

} // namespace bvt::identifiers
