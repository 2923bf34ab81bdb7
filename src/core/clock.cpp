#include "clock.h"

namespace bvt::clock {

namespace {
QDateTime fixedNow;
}

QDateTime now()
{
    return fixedNow.isNull() ? QDateTime::currentDateTimeUtc() : fixedNow;
}

void setFixedNow(const QDateTime &instant)
{
    fixedNow = instant.toUTC();
}

} // namespace bvt::clock
