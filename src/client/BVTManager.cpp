#include <Brevanti/BVTManager.h>

#include "core/log.h"
#include "origin.h"

BVTManager::BVTManager()
{
    updateBasicCredentials();
}

BVTManager::~BVTManager() = default;

void BVTManager::updateBasicCredentials()
{
    const QString credentials =
            bvt::formatLine("%@:%@", {bvt::describe(m_clientId), bvt::describe(m_clientSecret)});
    m_basicCredentials = QString::fromLatin1(credentials.toUtf8().toBase64());
}

QString BVTManager::clientId() const
{
    return m_clientId;
}

void BVTManager::setClientId(const QString &clientId)
{
    m_clientId = clientId;
    updateBasicCredentials();
}

QString BVTManager::clientSecret() const
{
    return m_clientSecret;
}

void BVTManager::setClientSecret(const QString &clientSecret)
{
    m_clientSecret = clientSecret;
    updateBasicCredentials();
}

QString BVTManager::origin() const
{
    return m_origin;
}

void BVTManager::setOrigin(const QString &origin)
{
    m_origin = origin;
}

QString BVTManager::access_token() const
{
    return m_accessToken;
}

void BVTManager::setAccess_token(const QString &accessToken)
{
    m_accessToken = accessToken;
}

QDateTime BVTManager::access_token_expires() const
{
    return m_accessTokenExpires;
}

void BVTManager::setAccess_token_expires(const QDateTime &expires)
{
    m_accessTokenExpires = expires;
}

QString BVTManager::current_user() const
{
    return m_currentUser;
}

void BVTManager::setCurrent_user(const QString &currentUser)
{
    m_currentUser = currentUser;
}
