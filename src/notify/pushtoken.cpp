#include <Brevanti/BVT.h>
#include <Brevanti/BVTNotify.h>
#include <Brevanti/platform/Application.h>

#include "core/deviceguard.h"
#include "core/log.h"

QString BVTNotify::stringWithDeviceToken(const QVariant &deviceToken)
{
    if (deviceToken.typeId() == QMetaType::QString && !deviceToken.isNull())
        return deviceToken.toString();
    // Anything else is taken for the token's bytes; what cannot be read as bytes is empty, and
    // empty is "", never nil.
    const QString text = QString::fromLatin1(deviceToken.toByteArray().toHex().toUpper());
    return text.isNull() ? QStringLiteral("") : text;
}

void BVTNotify::enableDevice(const QVariant &deviceToken)
{
    enableDevice(deviceToken, nullptr, nullptr);
}

void BVTNotify::enableDevice(const QVariant &deviceToken, const BVTSuccessBlock &success)
{
    enableDevice(deviceToken, success, nullptr);
}

void BVTNotify::enableDevice(const QVariant &deviceToken, const BVTSuccessBlock &success,
                             const BVTFailureBlock &failure)
{
    const QString device = BVT::currentDevice();
    if (!bvt::deviceKnown(device))
        return;
    const QString token = stringWithDeviceToken(deviceToken);
    const BVTParameters parameters{
            {QStringLiteral("device"),
             BVTParameters{{QStringLiteral("uuid"), device}, {QStringLiteral("token"), token}}}};
    bvt::log("Got device token %@", token);
    // The token counts as enabled only once the service has accepted it.
    BVT::patchUrl(
            QStringLiteral("/devices/enable"), parameters,
            [token, success](const QVariant &response) {
                BVT::setCurrentDeviceToken(token);
                if (success)
                    success(response);
            },
            failure);
}

void BVTNotify::verifyPushEnabled()
{
    verifyPushEnabled(nullptr, nullptr);
}

void BVTNotify::verifyPushEnabled(const BVTSuccessBlock &success)
{
    verifyPushEnabled(success, nullptr);
}

void BVTNotify::verifyPushEnabled(const BVTSuccessBlock &, const BVTFailureBlock &)
{
    // The callbacks are accepted for symmetry with the other families and never called.
    if (!bvt::deviceKnown(BVT::currentDevice()))
        return;
    if (BVT::currentDeviceToken().isNull()) {
        requestPushPermissions();
        return;
    }
    bvt::log("Verified token %@", BVT::currentDeviceToken());
}

void BVTNotify::requestPushPermissions()
{
    bvt::Application &application = bvt::Application::sharedApplication();
    application.registerUserNotificationSettings(bvt::UserNotificationSettings::settingsForTypes(
            bvt::UserNotificationTypeBadge | bvt::UserNotificationTypeSound
                    | bvt::UserNotificationTypeAlert,
            QVariant()));
    bvt::log("requestPushPermissions");
    application.registerForRemoteNotifications();
}
