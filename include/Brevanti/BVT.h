#pragma once

#include <Brevanti/BVTManager.h>
#include <Brevanti/BVTTypes.h>

class QNetworkAccessManager;

namespace bvt {

// Hands the library a network access manager of the host's own (a proxy, TLS settings, or the
// service's origin routed elsewhere). The library does not take ownership; nullptr goes back to
// the library's built-in manager. Call it on the main thread.
void setNetworkAccessManager(QNetworkAccessManager *manager);

} // namespace bvt
