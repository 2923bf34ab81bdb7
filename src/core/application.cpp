#include <Brevanti/platform/Application.h>

#include "core/logging.h"

namespace bvt {

Application &Application::sharedApplication()
{
    static Application application;
    return application;
}

void Application::setPushRegistrationHandler(PushRegistrationHandler *handler)
{
    m_pushHandler = handler;
}

PushRegistrationHandler *Application::pushRegistrationHandler() const
{
    return m_pushHandler;
}

void Application::registerUserNotificationSettings(const UserNotificationSettings &settings)
{
    if (m_pushHandler)
        m_pushHandler->registerUserNotificationSettings(settings);
    else
        qCWarning(lcPlatform) << "no push registration handler: notification settings dropped";
}

void Application::registerForRemoteNotifications()
{
    if (m_pushHandler)
        m_pushHandler->registerForRemoteNotifications();
    else
        qCWarning(lcPlatform) << "no push registration handler: remote registration dropped";
}

} // namespace bvt
