#pragma once

#include <QDateTime>

namespace bvt::clock {

// The device clock, in UTC. Tests may fix it so that token expiry can be checked to the instant.
QDateTime now();
void setFixedNow(const QDateTime &instant); // a null QDateTime goes back to the device clock

} // namespace bvt::clock
