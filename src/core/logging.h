#pragma once

#include <Brevanti/brevanti_core_export.h>

#include <QLoggingCategory>

namespace bvt {

// The library's own warnings, apart from its log lines (which go to the default category): misuse
// of the platform layer, documents the screens cannot show, and QML callbacks that threw. Declared
// by hand, not with Q_DECLARE_LOGGING_CATEGORY, so that the Widgets and Quick libraries can use
// them; defined with Q_LOGGING_CATEGORY.
BREVANTI_CORE_EXPORT const QLoggingCategory &lcPlatform();
BREVANTI_CORE_EXPORT const QLoggingCategory &lcUi();
BREVANTI_CORE_EXPORT const QLoggingCategory &lcQuick();

} // namespace bvt
