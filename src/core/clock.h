#pragma once

#include "core/internalexport.h"

#include <QDateTime>

namespace bvt::clock {

// The device clock, in UTC. Tests may fix it so that token expiry can be checked to the instant.
BREVANTI_CORE_INTERNAL_EXPORT QDateTime now();
BREVANTI_CORE_INTERNAL_EXPORT void
setFixedNow(const QDateTime &instant); // a null QDateTime goes back to the device clock

} // namespace bvt::clock
