#pragma once

#include "log.h"

#include <QString>

namespace bvt {

// Every device-bound operation starts here: while no device identifier is known (not initialised,
// or the first registration has not completed) it only writes this line to the log.
inline bool deviceKnown(const QString &deviceIdentifier)
{
    if (!deviceIdentifier.isNull())
        return true;
    log("You have not fired initWithLaunchOptions yet!");
    return false;
}

} // namespace bvt
