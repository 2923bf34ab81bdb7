#pragma once

#include <QPointer>
#include <QVariant>

namespace bvt {

class Window;

// Kinds of notification the application asks the user to allow; combine them with "|".
enum UserNotificationType {
    UserNotificationTypeNone = 0,
    UserNotificationTypeBadge = 1 << 0,
    UserNotificationTypeSound = 1 << 1,
    UserNotificationTypeAlert = 1 << 2,
};

struct UserNotificationSettings
{
    int types = UserNotificationTypeNone;
    QVariant categories; // invalid: none

    static UserNotificationSettings settingsForTypes(int types, const QVariant &categories)
    {
        return {types, categories};
    }
};

// Receives the library's push-registration requests. On a phone it is the host's bridge to the
// operating system, which answers later by giving the host a device token; the host passes it to
// BVTNotify::enableDevice.
class PushRegistrationHandler
{
public:
    virtual ~PushRegistrationHandler() = default;
    virtual void registerUserNotificationSettings(const UserNotificationSettings &settings) = 0;
    virtual void registerForRemoteNotifications() = 0;
};

// The running application as the library sees it.
class Application
{
public:
    static Application &sharedApplication();

    // The host installs its handler at launch; the library does not take ownership, and nullptr
    // removes it. Without a handler the requests go nowhere.
    void setPushRegistrationHandler(PushRegistrationHandler *handler);
    PushRegistrationHandler *pushRegistrationHandler() const;

    void registerUserNotificationSettings(const UserNotificationSettings &settings);
    void registerForRemoteNotifications();

    // The window the user sees; Window::show makes itself the key window.
    Window *keyWindow() const;
    void setKeyWindow(Window *window);

private:
    PushRegistrationHandler *m_pushHandler = nullptr;
    QPointer<Window> m_keyWindow;
};

} // namespace bvt
