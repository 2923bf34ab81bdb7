#include <Brevanti/BVTManager.h>

#include "callbacks.h"
#include "devicecalls.h"
#include "devicedescription.h"
#include "identifiers.h"
#include "session.h"
#include "verb.h"

// A manager is a session of its own with the device's calls over it; each call keeps the manager
// alive until its callbacks have run.
class BVTManager::Private
{
public:
    std::shared_ptr<bvt::Session> session;
};

std::shared_ptr<BVTManager> BVTManager::initWithLaunchOptions(const QVariantMap &launchOptions,
                                                              const QString &clientId,
                                                              const QString &clientSecret)
{
    Q_UNUSED(launchOptions); // accepted for the host's convenience; nothing in them is used
    std::shared_ptr<BVTManager> manager(new BVTManager);
    manager->d->session = bvt::Session::create(clientId, clientSecret);
    manager->initDevice();
    return manager;
}

BVTManager::BVTManager() : d(std::make_unique<Private>()) { }

BVTManager::~BVTManager() = default;

QString BVTManager::clientId() const
{
    return d->session->clientId();
}

void BVTManager::setClientId(const QString &clientId)
{
    d->session->setClientId(clientId);
}

QString BVTManager::clientSecret() const
{
    return d->session->clientSecret();
}

void BVTManager::setClientSecret(const QString &clientSecret)
{
    d->session->setClientSecret(clientSecret);
}

QString BVTManager::origin() const
{
    return d->session->origin;
}

void BVTManager::setOrigin(const QString &origin)
{
    d->session->origin = origin;
}

QString BVTManager::access_token() const
{
    return d->session->accessToken;
}

void BVTManager::setAccess_token(const QString &accessToken)
{
    d->session->accessToken = accessToken;
}

QDateTime BVTManager::access_token_expires() const
{
    return d->session->accessTokenExpires;
}

void BVTManager::setAccess_token_expires(const QDateTime &expires)
{
    d->session->accessTokenExpires = expires;
}

QString BVTManager::current_user() const
{
    return d->session->currentUser;
}

void BVTManager::setCurrent_user(const QString &currentUser)
{
    d->session->currentUser = currentUser;
}

bvt::Completion BVTManager::callbacks(const BVTSuccessBlock &success,
                                      const BVTFailureBlock &failure)
{
    return [self = shared_from_this(), told = bvt::callbacks(success, failure)](
                   const bvt::Outcome &outcome) { told(outcome); };
}

void BVTManager::verifyAuthenticated(const BVTSuccessBlock &success, const BVTErrorBlock &failure)
{
    d->session->verifyAuthenticated(
            [self = shared_from_this(), success](bool fetched) {
                if (success)
                    success(QVariantMap{{QStringLiteral("message"),
                                         fetched ? QStringLiteral("Updated access token")
                                                 : QStringLiteral("Existing access token")}});
            },
            [self = shared_from_this(), failure](const BVTError &error) {
                if (failure)
                    failure(error);
            });
}

void BVTManager::getUrl(const QString &path, const BVTParameters &parameters,
                        const BVTSuccessBlock &success, const BVTFailureBlock &failure)
{
    d->session->send(bvt::Verb::get, path, parameters, callbacks(success, failure));
}

void BVTManager::postUrl(const QString &path, const BVTParameters &parameters,
                         const BVTSuccessBlock &success, const BVTFailureBlock &failure)
{
    d->session->send(bvt::Verb::post, path, parameters, callbacks(success, failure));
}

void BVTManager::patchUrl(const QString &path, const BVTParameters &parameters,
                          const BVTSuccessBlock &success, const BVTFailureBlock &failure)
{
    d->session->send(bvt::Verb::patch, path, parameters, callbacks(success, failure));
}

void BVTManager::setBVTDeviceId(const QVariant &identifier)
{
    bvt::identifiers::setDeviceId(identifier);
}

QString BVTManager::getBVTDeviceId() const
{
    return bvt::identifiers::deviceId();
}

void BVTManager::clearBVTDeviceId()
{
    bvt::identifiers::clearDeviceId();
}

void BVTManager::setBVTUserId(const QVariant &identifier)
{
    bvt::identifiers::setUserId(identifier);
}

QString BVTManager::getBVTUserId() const
{
    return bvt::identifiers::userId();
}

void BVTManager::clearBVTUserId()
{
    bvt::identifiers::clearUserId();
}

void BVTManager::setBVTDeviceToken(const QVariant &token)
{
    bvt::identifiers::setDeviceToken(token);
}

QString BVTManager::getBVTDeviceToken() const
{
    return bvt::identifiers::deviceToken();
}

void BVTManager::clearBVTDeviceToken()
{
    bvt::identifiers::clearDeviceToken();
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

BVTParameters BVTManager::deviceParams() const
{
    return bvt::deviceDescription();
}

void BVTManager::initDevice()
{
    initDevice(nullptr, nullptr);
}

void BVTManager::initDevice(const BVTSuccessBlock &success)
{
    initDevice(success, nullptr);
}

void BVTManager::initDevice(const BVTSuccessBlock &success, const BVTFailureBlock &failure)
{
    bvt::registerDevice(d->session, callbacks(success, failure));
}

void BVTManager::unassignDevice()
{
    unassignDevice(nullptr, nullptr);
}

void BVTManager::unassignDevice(const BVTSuccessBlock &success)
{
    unassignDevice(success, nullptr);
}

void BVTManager::unassignDevice(const BVTSuccessBlock &success, const BVTFailureBlock &failure)
{
    bvt::unassignDevice(d->session, callbacks(success, failure));
}

void BVTManager::assignDeviceToUser(const QString &userIdentifier)
{
    assignDeviceToUser(userIdentifier, nullptr, nullptr);
}

void BVTManager::assignDeviceToUser(const QString &userIdentifier, const BVTSuccessBlock &success)
{
    assignDeviceToUser(userIdentifier, success, nullptr);
}

void BVTManager::assignDeviceToUser(const QString &userIdentifier, const BVTSuccessBlock &success,
                                    const BVTFailureBlock &failure)
{
    bvt::throwIfRefused(bvt::assignDevice(d->session, userIdentifier, callbacks(success, failure)));
}
