#pragma once

/// \file
/// bvt::UserNotificationSettings, the kinds of notification the application asks to allow.

#include <Brevanti/brevanti_core_export.h>

#include <QVariant>

namespace bvt {

/// Kinds of notification the application asks the user to allow; combine them with "|".
enum UserNotificationType {
    UserNotificationTypeNone = 0,       ///< none
    UserNotificationTypeBadge = 1 << 0, ///< a number on the application's icon
    UserNotificationTypeSound = 1 << 1, ///< a sound
    UserNotificationTypeAlert = 1 << 2, ///< a message on screen
};

/// What the application asks the user to allow, handed to the PushRegistrationHandler.
struct BREVANTI_CORE_EXPORT UserNotificationSettings
{
    /// UserNotificationType values combined with "|".
    int types = UserNotificationTypeNone;
    QVariant categories; ///< invalid: none

    /// Settings of the types and categories given.
    static UserNotificationSettings settingsForTypes(int types, const QVariant &categories)
    {
        return {types, categories};
    }
};

} // namespace bvt
