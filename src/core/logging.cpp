#include "logging.h"

namespace bvt {

Q_LOGGING_CATEGORY(lcPlatform, "brevanti.platform")
Q_LOGGING_CATEGORY(lcUi, "brevanti.ui")
Q_LOGGING_CATEGORY(lcQuick, "brevanti.quick")

} // namespace bvt
