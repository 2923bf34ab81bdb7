#pragma once

/// \file
/// bvt::PushRegistrationHandler, the host's bridge for push registration.

#include <Brevanti/brevanti_core_export.h>

#include <Brevanti/platform/UserNotificationSettings.h>

namespace bvt {

/// Receives the library's push-registration requests. On a phone it is the host's bridge to the
/// operating system, which answers later by giving the host a device token; the host passes it to
/// BVTNotify::enableDevice.
class BREVANTI_CORE_EXPORT PushRegistrationHandler
{
public:
    virtual ~PushRegistrationHandler() = default;
    /// Asks the user to allow the kinds of notification in settings.
    virtual void registerUserNotificationSettings(const UserNotificationSettings &settings) = 0;
    /// Asks the operating system for a device token.
    virtual void registerForRemoteNotifications() = 0;
};

} // namespace bvt
