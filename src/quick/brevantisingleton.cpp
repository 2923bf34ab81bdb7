#include "brevantisingleton.h"

#include "core/identifierevents.h"
#include "jscallback.h"

#include <Brevanti/BVT.h>
#include <Brevanti/BVTNotify.h>

#include <QJSEngine>

#include <stdexcept>

namespace bvt::quick {

bool BrevantiSingleton::Shown::update(const QString &now)
{
    if (now == value && now.isNull() == value.isNull())
        return false;
    value = now;
    return true;
}

// An exception must not cross the QML engine; the caller gets it as a JavaScript error.
template<typename Call>
void BrevantiSingleton::refusable(Call &&call)
{
    try {
        call();
    } catch (const std::invalid_argument &error) {
        m_engine->throwError(QString::fromUtf8(error.what()));
    }
}

BrevantiSingleton::BrevantiSingleton(QJSEngine *engine, QObject *parent)
    : QObject(parent),
      m_engine(engine),
      m_device{BVT::currentDevice()},
      m_user{BVT::currentUser()},
      m_token{BVT::currentDeviceToken()}
{
    const IdentifierEvents &events = IdentifierEvents::instance();
    connect(&events, &IdentifierEvents::deviceIdChanged, this, [this] {
        if (m_device.update(BVT::currentDevice()))
            Q_EMIT currentDeviceChanged();
    });
    connect(&events, &IdentifierEvents::userIdChanged, this, [this] {
        if (m_user.update(BVT::currentUser()))
            Q_EMIT currentUserChanged();
    });
    connect(&events, &IdentifierEvents::deviceTokenChanged, this, [this] {
        if (m_token.update(BVT::currentDeviceToken()))
            Q_EMIT currentDeviceTokenChanged();
    });
}

BrevantiSingleton *BrevantiSingleton::create(QQmlEngine *, QJSEngine *engine)
{
    return new BrevantiSingleton(engine);
}

QString BrevantiSingleton::currentDevice() const
{
    return BVT::currentDevice();
}

QString BrevantiSingleton::currentUser() const
{
    return BVT::currentUser();
}

QString BrevantiSingleton::currentDeviceToken() const
{
    return BVT::currentDeviceToken();
}

void BrevantiSingleton::initWithLaunchOptions(const QVariantMap &launchOptions,
                                              const QString &clientId, const QString &clientSecret)
{
    BVT::initWithLaunchOptions(launchOptions, clientId, clientSecret);
}

void BrevantiSingleton::getUrl(const QString &path, const QVariantMap &parameters,
                               const QJSValue &onSuccess, const QJSValue &onFailure)
{
    BVT::getUrl(path, parameters, successCallback(this, m_engine, onSuccess),
                failureCallback(this, m_engine, onFailure));
}

void BrevantiSingleton::postUrl(const QString &path, const QVariantMap &parameters,
                                const QJSValue &onSuccess, const QJSValue &onFailure)
{
    BVT::postUrl(path, parameters, successCallback(this, m_engine, onSuccess),
                 failureCallback(this, m_engine, onFailure));
}

void BrevantiSingleton::patchUrl(const QString &path, const QVariantMap &parameters,
                                 const QJSValue &onSuccess, const QJSValue &onFailure)
{
    BVT::patchUrl(path, parameters, successCallback(this, m_engine, onSuccess),
                  failureCallback(this, m_engine, onFailure));
}

void BrevantiSingleton::assignDeviceToUser(const QString &userIdentifier, const QJSValue &onSuccess,
                                           const QJSValue &onFailure)
{
    refusable([&] {
        BVT::assignDeviceToUser(userIdentifier, successCallback(this, m_engine, onSuccess),
                                failureCallback(this, m_engine, onFailure));
    });
}

void BrevantiSingleton::unassignDevice(const QJSValue &onSuccess, const QJSValue &onFailure)
{
    BVT::unassignDevice(successCallback(this, m_engine, onSuccess),
                        failureCallback(this, m_engine, onFailure));
}

void BrevantiSingleton::setCurrentDeviceToken(const QString &token)
{
    BVT::setCurrentDeviceToken(token);
}

QString BrevantiSingleton::stringWithDeviceToken(const QVariant &deviceToken) const
{
    return BVTNotify::stringWithDeviceToken(deviceToken);
}

void BrevantiSingleton::enableDevice(const QVariant &deviceToken, const QJSValue &onSuccess,
                                     const QJSValue &onFailure)
{
    BVTNotify::enableDevice(deviceToken, successCallback(this, m_engine, onSuccess),
                            failureCallback(this, m_engine, onFailure));
}

void BrevantiSingleton::verifyPushEnabled()
{
    BVTNotify::verifyPushEnabled();
}

void BrevantiSingleton::requestPushPermissions()
{
    BVTNotify::requestPushPermissions();
}

void BrevantiSingleton::getPreferences(const QJSValue &onSuccess, const QJSValue &onFailure)
{
    BVTNotify::getPreferences(successCallback(this, m_engine, onSuccess),
                              failureCallback(this, m_engine, onFailure));
}

void BrevantiSingleton::enablePreferenceWithCategory(const QString &category,
                                                     const QString &preference,
                                                     const QJSValue &onSuccess,
                                                     const QJSValue &onFailure)
{
    refusable([&] {
        BVTNotify::enablePreferenceWithCategory(category, preference,
                                                successCallback(this, m_engine, onSuccess),
                                                failureCallback(this, m_engine, onFailure));
    });
}

void BrevantiSingleton::disablePreferenceWithCategory(const QString &category,
                                                      const QString &preference,
                                                      const QJSValue &onSuccess,
                                                      const QJSValue &onFailure)
{
    refusable([&] {
        BVTNotify::disablePreferenceWithCategory(category, preference,
                                                 successCallback(this, m_engine, onSuccess),
                                                 failureCallback(this, m_engine, onFailure));
    });
}

} // namespace bvt::quick
