#pragma once

#include "client/outcome.h"

#include <QString>
#include <QVariant>

#include <memory>

namespace bvt {

class Session;

// The push token's and the preferences' calls of the service, over a session (none before the
// library is initialised). Each tells its completion once the service has answered, or returns at
// once with what kept it from being sent.

// The push token as the service receives it: text as it stands, anything else as the upper-case
// hexadecimal of its bytes (empty, never null).
QString pushTokenText(const QVariant &pushToken);
// Sends the push token; stores it once the service accepted it.
Start enablePush(const std::shared_ptr<Session> &session, const QVariant &pushToken,
                 const Completion &done);
// Fetches the preference document, always by device.
Start fetchPreferences(const std::shared_ptr<Session> &session, const Completion &done);
// Switches one preference, for the user when one is assigned, else for the device; then checks
// that push is enabled.
Start switchPreference(const std::shared_ptr<Session> &session, bool enable,
                       const QString &category, const QString &preference, const Completion &done);
// Asks for push permission when no push token is stored, else logs the stored one.
void verifyPushEnabled(const std::shared_ptr<Session> &session);
// Asks the platform for push permission and for a push token.
void askForPushPermission();

} // namespace bvt
