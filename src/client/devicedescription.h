#pragma once

#include <QString>

namespace bvt {

// The system version as the service receives it: its leading decimal number in single precision,
// printed with "%f" ("10.3.1" gives "10.300000").
QString osVersionText(const QString &systemVersion);

} // namespace bvt
