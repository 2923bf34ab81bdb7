#include "bvtsingleton.h"

#include "jscallback.h"
#include "quickcard.h"

#include <Brevanti/BVT.h>
#include <Brevanti/Client.h>

#include <QJSEngine>
#include <QQmlEngine>

namespace bvt::quick {

BvtSingleton::BvtSingleton(QJSEngine *engine, QObject *parent) : QObject(parent), m_engine(engine)
{
    // The client holds the state and announces its changes; these are its own under their
    // described names.
    Client *client = Client::instance();
    connect(client, &Client::deviceIdChanged, this, &BvtSingleton::currentDeviceChanged);
    connect(client, &Client::userChanged, this, &BvtSingleton::currentUserChanged);
    connect(client, &Client::pushTokenChanged, this, &BvtSingleton::currentDeviceTokenChanged);
}

BvtSingleton *BvtSingleton::create(QQmlEngine *qmlEngine, QJSEngine *engine)
{
    installQuickCard(qmlEngine);
    return new BvtSingleton(engine);
}

QString BvtSingleton::currentDevice() const
{
    return Client::instance()->deviceId();
}

QString BvtSingleton::currentUser() const
{
    return Client::instance()->user();
}

QString BvtSingleton::currentDeviceToken() const
{
    return Client::instance()->pushToken();
}

void BvtSingleton::initWithLaunchOptions(const QVariantMap &launchOptions, const QString &clientId,
                                         const QString &clientSecret)
{
    BVT::initWithLaunchOptions(launchOptions, clientId, clientSecret);
}

void BvtSingleton::getUrl(const QString &path, const QVariantMap &parameters,
                          const QJSValue &onSuccess, const QJSValue &onFailure)
{
    BVT::getUrl(path, parameters, successCallback(this, m_engine, onSuccess),
                failureCallback(this, m_engine, onFailure));
}

void BvtSingleton::postUrl(const QString &path, const QVariantMap &parameters,
                           const QJSValue &onSuccess, const QJSValue &onFailure)
{
    BVT::postUrl(path, parameters, successCallback(this, m_engine, onSuccess),
                 failureCallback(this, m_engine, onFailure));
}

void BvtSingleton::patchUrl(const QString &path, const QVariantMap &parameters,
                            const QJSValue &onSuccess, const QJSValue &onFailure)
{
    BVT::patchUrl(path, parameters, successCallback(this, m_engine, onSuccess),
                  failureCallback(this, m_engine, onFailure));
}

void BvtSingleton::assignDeviceToUser(const QString &userIdentifier, const QJSValue &onSuccess,
                                      const QJSValue &onFailure)
{
    refusable(m_engine, [&] {
        BVT::assignDeviceToUser(userIdentifier, successCallback(this, m_engine, onSuccess),
                                failureCallback(this, m_engine, onFailure));
    });
}

void BvtSingleton::unassignDevice(const QJSValue &onSuccess, const QJSValue &onFailure)
{
    BVT::unassignDevice(successCallback(this, m_engine, onSuccess),
                        failureCallback(this, m_engine, onFailure));
}

void BvtSingleton::setCurrentDeviceToken(const QString &token)
{
    BVT::setCurrentDeviceToken(token);
}

} // namespace bvt::quick
