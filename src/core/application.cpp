#include <Brevanti/platform/Application.h>

#include "core/logging.h"

namespace bvt {

class Application::Private
{
public:
    PushRegistrationHandler *pushHandler = nullptr;
};

Application &Application::sharedApplication()
{
    // Never destroyed, so that a static handler's destructor can still remove itself at exit.
    static Application *const application = new Application;
    return *application;
}

Application::Application() : d(std::make_unique<Private>()) { }

Application::~Application() = default;

void Application::setPushRegistrationHandler(PushRegistrationHandler *handler)
{
    d->pushHandler = handler;
}

PushRegistrationHandler *Application::pushRegistrationHandler() const
{
    return d->pushHandler;
}

void Application::registerUserNotificationSettings(const UserNotificationSettings &settings)
{
    if (d->pushHandler)
        d->pushHandler->registerUserNotificationSettings(settings);
    else
        qCWarning(lcPlatform) << "no push registration handler: notification settings dropped";
}

void Application::registerForRemoteNotifications()
{
    if (d->pushHandler)
        d->pushHandler->registerForRemoteNotifications();
    else
        qCWarning(lcPlatform) << "no push registration handler: remote registration dropped";
}

} // namespace bvt
