#pragma once

#include <QVariant>

namespace bvt {

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

} // namespace bvt
