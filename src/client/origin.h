#pragma once

#include "core/internalexport.h"

#include <QByteArray>
#include <QString>

namespace bvt {

// The hosted service's base URL, fixed when the library is built.
BREVANTI_CORE_INTERNAL_EXPORT QString serviceOrigin();

// The service's own media type, sent as "Accept" on every authenticated request.
inline constexpr char vendorMediaType[] = "application/vnd.brevanti.com;version=1";

} // namespace bvt
