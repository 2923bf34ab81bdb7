#pragma once

#include "core/internalexport.h"

#include <QVariant>

namespace bvt {

// A JSON value read as a 32-bit signed integer: numbers are cut to whole numbers, booleans are 1
// or 0, text is read up to its first non-digit (leading blanks and a sign allowed), all clamped to
// the 32-bit range; anything else is 0.
BREVANTI_CORE_INTERNAL_EXPORT qint32 integerValue(const QVariant &value);

} // namespace bvt
