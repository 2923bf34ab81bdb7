#include "notifycalls.h"

#include "client/devicecalls.h"
#include "client/identifiers.h"
#include "client/session.h"
#include "client/verb.h"
#include "core/log.h"

#include <Brevanti/platform/Application.h>

namespace bvt {

QString pushTokenText(const QVariant &pushToken)
{
    if (pushToken.typeId() == QMetaType::QString && !pushToken.isNull())
        return pushToken.toString();
    // Anything else is taken for the token's bytes; what cannot be read as bytes is empty, and
    // empty is "", never nil.
    const QString text = QString::fromLatin1(pushToken.toByteArray().toHex().toUpper());
    return text.isNull() ? QStringLiteral("") : text;
}

Start enablePush(const std::shared_ptr<Session> &session, const QVariant &pushToken,
                 const Completion &done)
{
    const QString device = registeredDevice(session);
    if (device.isNull())
        return {Start::NotRegistered};
    const QString token = pushTokenText(pushToken);
    const BVTParameters parameters{
            {QStringLiteral("device"),
             BVTParameters{{QStringLiteral("uuid"), device}, {QStringLiteral("token"), token}}}};
    log("Got device token %@", token);
    // The token counts as enabled only once the service has accepted it.
    session->send(Verb::patch, QStringLiteral("/devices/enable"), parameters,
                  [token, done](const Outcome &outcome) {
                      if (outcome.response.accepted)
                          identifiers::setDeviceToken(token);
                      done(outcome);
                  });
    return {Start::Sent};
}

Start fetchPreferences(const std::shared_ptr<Session> &session, const Completion &done)
{
    const QString device = registeredDevice(session);
    if (device.isNull())
        return {Start::NotRegistered};
    // The document is always asked for by device, even when a user is assigned.
    session->send(Verb::get, QStringLiteral("/preferences"),
                  {{QStringLiteral("device"), BVTParameters{{QStringLiteral("uuid"), device}}}},
                  done);
    return {Start::Sent};
}

Start switchPreference(const std::shared_ptr<Session> &session, bool enable,
                       const QString &category, const QString &preference, const Completion &done)
{
    const QString device = registeredDevice(session);
    if (device.isNull())
        return {Start::NotRegistered};
    if (category.isNull() || preference.isNull())
        return {Start::Refused, "a preference switch needs a category and a preference key"};
    // A change goes to the user when one is assigned, else to the device; never to both.
    const QString user = identifiers::userId();
    BVTParameters parameters{{QStringLiteral("category"), category},
                             {QStringLiteral("preference"), preference}};
    if (!user.isNull())
        parameters.insert(QStringLiteral("user"),
                          BVTParameters{{QStringLiteral("identifier"), user}});
    else
        parameters.insert(QStringLiteral("device"),
                          BVTParameters{{QStringLiteral("uuid"), device}});
    session->send(Verb::patch,
                  enable ? QStringLiteral("/preferences/enable")
                         : QStringLiteral("/preferences/disable"),
                  parameters, done);
    verifyPushEnabled(session);
    return {Start::Sent};
}

void verifyPushEnabled(const std::shared_ptr<Session> &session)
{
    if (registeredDevice(session).isNull())
        return;
    const QString token = identifiers::deviceToken();
    if (token.isNull())
        askForPushPermission();
    else
        log("Verified token %@", token);
}

void askForPushPermission()
{
    Application &application = Application::sharedApplication();
    application.registerUserNotificationSettings(UserNotificationSettings::settingsForTypes(
            UserNotificationTypeBadge | UserNotificationTypeSound | UserNotificationTypeAlert,
            QVariant()));
    log("requestPushPermissions");
    application.registerForRemoteNotifications();
}

} // namespace bvt
