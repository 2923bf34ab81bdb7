#pragma once

#include "core/internalexport.h"

#include <QByteArray>
#include <QString>
#include <QUrl>

namespace bvt {

// The hosted service's base URL, fixed when the library is built.
BREVANTI_CORE_INTERNAL_EXPORT QString serviceOrigin();

// Whether both name the same scheme, host and port (a port left out is the scheme's own).
BREVANTI_CORE_INTERNAL_EXPORT bool sameOrigin(const QUrl &a, const QUrl &b);

// Whether a request URL goes to the origin and nowhere else: a path joined to the origin as text
// can name another host ("@host/..."), another port (":9999/...") or lengthen the host name.
BREVANTI_CORE_INTERNAL_EXPORT bool staysWithin(const QUrl &url, const QUrl &origin);

// The service's own media type, sent as "Accept" on every authenticated request.
inline constexpr char vendorMediaType[] = "application/vnd.brevanti.com;version=1";

} // namespace bvt
