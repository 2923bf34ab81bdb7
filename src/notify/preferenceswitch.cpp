#include "preferenceswitch.h"

#include <Brevanti/BVTNotify.h>

#include "core/log.h"

#include <stdexcept>

namespace bvt {

void sendPreferenceSwitch(const QString &category, const QString &preference, bool on,
                          const QLoggingCategory &screen)
{
    log("The switch is %@", on ? "ON" : "OFF");
    log("The switch is for %@:%@", category, preference);
    try {
        if (on)
            BVTNotify::enablePreferenceWithCategory(category, preference);
        else
            BVTNotify::disablePreferenceWithCategory(category, preference);
    } catch (const std::invalid_argument &error) {
        qCWarning(screen) << "switch not sent:" << error.what();
    }
}

} // namespace bvt
