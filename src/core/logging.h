#pragma once

#include <QLoggingCategory>

namespace bvt {

// The library's own warnings, apart from its log lines (which go to the default category): misuse
// of the platform layer, documents the screens cannot show, and QML callbacks that threw.
Q_DECLARE_LOGGING_CATEGORY(lcPlatform)
Q_DECLARE_LOGGING_CATEGORY(lcUi)
Q_DECLARE_LOGGING_CATEGORY(lcQuick)

} // namespace bvt
