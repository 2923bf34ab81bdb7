#pragma once

#include <Brevanti/brevanti_core_export.h>

#include <Brevanti/platform/UserNotificationSettings.h>

namespace bvt {

// Receives the library's push-registration requests. On a phone it is the host's bridge to the
// operating system, which answers later by giving the host a device token; the host passes it to
// BVTNotify::enableDevice.
class BREVANTI_CORE_EXPORT PushRegistrationHandler
{
public:
    virtual ~PushRegistrationHandler() = default;
    virtual void registerUserNotificationSettings(const UserNotificationSettings &settings) = 0;
    virtual void registerForRemoteNotifications() = 0;
};

} // namespace bvt
