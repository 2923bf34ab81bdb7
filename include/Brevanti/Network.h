#pragma once

/// \file
/// Where the library's requests go: bvt::setNetworkAccessManager.

#include <Brevanti/brevanti_core_export.h>

class QNetworkAccessManager;

namespace bvt {

/// Hands the library a network access manager of the host's own (a proxy, TLS settings, or the
/// service's origin routed elsewhere). The library does not take ownership; nullptr goes back to
/// the library's built-in manager. Call it on the main thread.
BREVANTI_CORE_EXPORT void setNetworkAccessManager(QNetworkAccessManager *manager);

} // namespace bvt
