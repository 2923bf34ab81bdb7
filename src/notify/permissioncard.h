#pragma once

#include <Brevanti/brevanti_core_export.h>

namespace bvt {

// Whether the permission card may show. A stored push token is the library's only sign that push
// was accepted already: then it is not shown, which the log says and the client is told
// (CardNotShown). Every card, the widget one and the QML one, asks this first.
BREVANTI_CORE_EXPORT bool permissionCardWanted();

} // namespace bvt
