#include "bvtmanagerprivate.h"

#include "core/log.h"
#include "origin.h"

BVTManager::BVTManager() : d(std::make_unique<Private>())
{
    d->updateBasicCredentials();
}

BVTManager::~BVTManager() = default;

void BVTManager::Private::updateBasicCredentials()
{
    const QString credentials =
            bvt::formatLine("%@:%@", {bvt::describe(clientId), bvt::describe(clientSecret)});
    basicCredentials = QString::fromLatin1(credentials.toUtf8().toBase64());
}

QString BVTManager::clientId() const
{
    return d->clientId;
}

void BVTManager::setClientId(const QString &clientId)
{
    d->clientId = clientId;
    d->updateBasicCredentials();
}

QString BVTManager::clientSecret() const
{
    return d->clientSecret;
}

void BVTManager::setClientSecret(const QString &clientSecret)
{
    d->clientSecret = clientSecret;
    d->updateBasicCredentials();
}

QString BVTManager::origin() const
{
    return d->origin;
}

void BVTManager::setOrigin(const QString &origin)
{
    d->origin = origin;
}

QString BVTManager::access_token() const
{
    return d->accessToken;
}

void BVTManager::setAccess_token(const QString &accessToken)
{
    d->accessToken = accessToken;
}

QDateTime BVTManager::access_token_expires() const
{
    return d->accessTokenExpires;
}

void BVTManager::setAccess_token_expires(const QDateTime &expires)
{
    d->accessTokenExpires = expires;
}

QString BVTManager::current_user() const
{
    return d->currentUser;
}

void BVTManager::setCurrent_user(const QString &currentUser)
{
    d->currentUser = currentUser;
}
