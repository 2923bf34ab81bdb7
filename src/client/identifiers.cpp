#include "identifiers.h"

#include "core/identifierevents.h"
#include "core/log.h"
#include "core/userdefaults.h"

namespace {

const QString deviceIdKey = QStringLiteral("com.brevanti.ios.BVTDeviceId");
const QString userIdKey = QStringLiteral("com.brevanti.ios.BVTUserId");
const QString deviceTokenKey = QStringLiteral("com.brevanti.ios.BVTDeviceToken");

bvt::UserDefaults &defaults()
{
    return bvt::UserDefaults::standardUserDefaults();
}

void store(const QVariant &value, const QString &key)
{
    defaults().setObject(value, key);
    defaults().synchronize();
}

void remove(const QString &key)
{
    defaults().removeObjectForKey(key);
    defaults().synchronize();
}

// Announced after the store's own log line, which listeners may follow with theirs.
void announce(void (bvt::IdentifierEvents::*changed)())
{
    Q_EMIT(bvt::IdentifierEvents::instance().*changed)();
}

} // namespace

namespace bvt::identifiers {

void setDeviceId(const QVariant &identifier)
{
    const QString stored = deviceId();
    if (!stored.isNull()) {
        log("Already has uuid: %@", stored);
        return;
    }
    log("No UUID yet, preference it");
    store(identifier, deviceIdKey);
    log("Set UUID to: %@", identifier);
    announce(&IdentifierEvents::deviceIdChanged);
}

QString deviceId()
{
    return defaults().stringForKey(deviceIdKey);
}

void clearDeviceId()
{
    remove(deviceIdKey);
    announce(&IdentifierEvents::deviceIdChanged);
}

void setUserId(const QVariant &identifier)
{
    store(identifier, userIdKey);
    log("Set User ID to: %@", identifier);
    announce(&IdentifierEvents::userIdChanged);
}

QString userId()
{
    return defaults().stringForKey(userIdKey);
}

void clearUserId()
{
    remove(userIdKey);
    announce(&IdentifierEvents::userIdChanged);
}

void setDeviceToken(const QVariant &token)
{
    store(token, deviceTokenKey);
    log("Set Device Token to: %@", token);
    announce(&IdentifierEvents::deviceTokenChanged);
}

QString deviceToken()
{
    return defaults().stringForKey(deviceTokenKey);
}

void clearDeviceToken()
{
    remove(deviceTokenKey);
    announce(&IdentifierEvents::deviceTokenChanged);
}

} // namespace bvt::identifiers
