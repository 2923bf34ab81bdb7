#include <Brevanti/BVTManager.h>

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

void BVTManager::setBVTDeviceId(const QVariant &identifier)
{
    const QString stored = getBVTDeviceId();
    if (!stored.isNull()) {
        bvt::log("Already has uuid: %@", stored);
        return;
    }
    bvt::log("No UUID yet, preference it");
    store(identifier, deviceIdKey);
    bvt::log("Set UUID to: %@", identifier);
    announce(&bvt::IdentifierEvents::deviceIdChanged);
}

QString BVTManager::getBVTDeviceId() const
{
    return defaults().stringForKey(deviceIdKey);
}

void BVTManager::clearBVTDeviceId()
{
    remove(deviceIdKey);
    announce(&bvt::IdentifierEvents::deviceIdChanged);
}

void BVTManager::setBVTUserId(const QVariant &identifier)
{
    store(identifier, userIdKey);
    bvt::log("Set User ID to: %@", identifier);
    announce(&bvt::IdentifierEvents::userIdChanged);
}

QString BVTManager::getBVTUserId() const
{
    return defaults().stringForKey(userIdKey);
}

void BVTManager::clearBVTUserId()
{
    remove(userIdKey);
    announce(&bvt::IdentifierEvents::userIdChanged);
}

void BVTManager::setBVTDeviceToken(const QVariant &token)
{
    store(token, deviceTokenKey);
    bvt::log("Set Device Token to: %@", token);
    announce(&bvt::IdentifierEvents::deviceTokenChanged);
}

QString BVTManager::getBVTDeviceToken() const
{
    return defaults().stringForKey(deviceTokenKey);
}

void BVTManager::clearBVTDeviceToken()
{
    remove(deviceTokenKey);
    announce(&bvt::IdentifierEvents::deviceTokenChanged);
}

QString BVTManager::currentDevice() const
{
    return getBVTDeviceId();
}

QString BVTManager::currentUser() const
{
    return getBVTUserId();
}

QString BVTManager::currentDeviceToken() const
{
    return getBVTDeviceToken();
}

void BVTManager::setCurrentDeviceToken(const QString &token)
{
    setBVTDeviceToken(token);
}
