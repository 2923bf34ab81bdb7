#pragma once

#include <QLoggingCategory>

namespace bvt {

// The library's own warnings, apart from its log lines (which go to the default category): misuse
// of the platform layer, and documents the screens cannot show.
Q_DECLARE_LOGGING_CATEGORY(lcPlatform)
Q_DECLARE_LOGGING_CATEGORY(lcUi)

} // namespace bvt
