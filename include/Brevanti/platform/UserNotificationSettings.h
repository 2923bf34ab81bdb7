#pragma once

#include <Brevanti/brevanti_core_export.h>

#include <QVariant>

namespace bvt {

// Kinds of notification the application asks the user to allow; combine them with "|".
enum UserNotificationType {
    UserNotificationTypeNone = 0,
    UserNotificationTypeBadge = 1 << 0,
    UserNotificationTypeSound = 1 << 1,
    UserNotificationTypeAlert = 1 << 2,
};

struct BREVANTI_CORE_EXPORT UserNotificationSettings
{
    int types = UserNotificationTypeNone;
    QVariant categories; // invalid: none

    static UserNotificationSettings settingsForTypes(int types, const QVariant &categories)
    {
        return {types, categories};
    }
};

} // namespace bvt
