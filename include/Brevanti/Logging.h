#pragma once

/// \file
/// Where the library's log lines go: bvt::setLogHandler.

#include <Brevanti/brevanti_core_export.h>

#include <QString>

#include <functional>

namespace bvt {

/// Receives each of the library's log lines, as setLogHandler says.
using LogHandler = std::function<void(const QString &line)>;
/// Where the library's log lines go. By default each line is written with qInfo() in Qt's default
/// category, exactly as it stands. A handler receives each line instead: route it elsewhere, or
/// drop it to silence the library without silencing the host's own qInfo() lines. An empty
/// function goes back to the default. Call it on the main thread.
BREVANTI_CORE_EXPORT void setLogHandler(LogHandler handler);

} // namespace bvt
