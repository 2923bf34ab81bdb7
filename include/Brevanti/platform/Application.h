#pragma once

/// \file
/// bvt::Application, the running application as the library sees it.

#include <Brevanti/brevanti_core_export.h>

#include <Brevanti/platform/PushRegistrationHandler.h>

#include <memory>

namespace bvt {

/// The running application as the library sees it.
class BREVANTI_CORE_EXPORT Application
{
public:
    /// The one application object.
    static Application &sharedApplication();
    Application();
    ~Application();

    /// The host installs its handler at launch; the library does not take ownership, and nullptr
    /// removes it. Without a handler the requests go nowhere.
    ///@{
    void setPushRegistrationHandler(PushRegistrationHandler *handler);
    PushRegistrationHandler *pushRegistrationHandler() const;
    ///@}

    /// Passes the request on to the handler; without one it is dropped with a warning in the
    /// category brevanti.platform.
    ///@{
    void registerUserNotificationSettings(const UserNotificationSettings &settings);
    void registerForRemoteNotifications();
    ///@}

private:
    class Private;
    const std::unique_ptr<Private> d;
};

} // namespace bvt
