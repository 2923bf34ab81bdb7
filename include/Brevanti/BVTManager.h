#pragma once

#include <Brevanti/brevanti_core_export.h>

#include <Brevanti/BVTTypes.h>

#include <QDateTime>
#include <QString>
#include <QVariantMap>

#include <memory>

namespace bvt {
struct Verb;
}

// The library's one manager: the client credentials, the service's base URL, the cached access
// token, the stored device and user identifiers, and the device's registration with the service.
// Use it through the facade BVT; it is created with the static factory initWithLaunchOptions and
// shared, each request keeping it alive until its callbacks have run.
class BREVANTI_CORE_EXPORT BVTManager : public std::enable_shared_from_this<BVTManager>
{
public:
    // The factory, with the device's registration (device/registration.cpp).

    // Builds a manager holding the credentials and the service's base URL, then starts the device's
    // registration (initDevice). The launch options are accepted and ignored; the credentials are
    // not checked until the first token request.
    static std::shared_ptr<BVTManager> initWithLaunchOptions(const QVariantMap &launchOptions,
                                                             const QString &clientId,
                                                             const QString &clientSecret);

    // Configuration and properties (client/BVTManager.cpp).

    ~BVTManager();

    BVTManager(const BVTManager &) = delete;
    BVTManager &operator=(const BVTManager &) = delete;

    QString clientId() const;
    void setClientId(const QString &clientId);
    QString clientSecret() const;
    void setClientSecret(const QString &clientSecret);
    QString origin() const;
    void setOrigin(const QString &origin);
    QString access_token() const;
    void setAccess_token(const QString &accessToken);
    QDateTime access_token_expires() const;
    void setAccess_token_expires(const QDateTime &expires);
    QString current_user() const;
    void setCurrent_user(const QString &currentUser);

    // The access token (client/accesstoken.cpp).

    // Makes sure a valid access token is held, fetching one when none is. success receives
    // {"message": "Existing access token"} or {"message": "Updated access token"}; failure
    // receives the failed token request's error. At most one of them is called, once, later or
    // (for a valid token) at once.
    void verifyAuthenticated(const BVTSuccessBlock &success, const BVTErrorBlock &failure);

    // Authenticated requests (client/authenticatedrequests.cpp). The path is appended to origin as
    // it stands; the parameters go form-encoded into the query (GET) or the body (POST, PATCH).
    // When no token can be had only a log line is written and neither callback is called.
    void getUrl(const QString &path, const BVTParameters &parameters,
                const BVTSuccessBlock &success, const BVTFailureBlock &failure);
    void postUrl(const QString &path, const BVTParameters &parameters,
                 const BVTSuccessBlock &success, const BVTFailureBlock &failure);
    void patchUrl(const QString &path, const BVTParameters &parameters,
                  const BVTSuccessBlock &success, const BVTFailureBlock &failure);

    // The identifier store (device/identifierstore.cpp): three strings kept in the application's
    // settings between launches. The device identifier is written once (a second one is refused and
    // logged); the user identifier and the device token are overwritten. A number stored reads back
    // as its decimal text; a null value removes the entry.
    void setBVTDeviceId(const QVariant &identifier);
    QString getBVTDeviceId() const;
    void clearBVTDeviceId();
    void setBVTUserId(const QVariant &identifier);
    QString getBVTUserId() const;
    void clearBVTUserId();
    void setBVTDeviceToken(const QVariant &token);
    QString getBVTDeviceToken() const;
    void clearBVTDeviceToken();
    QString currentDevice() const;
    QString currentUser() const;
    QString currentDeviceToken() const;
    void setCurrentDeviceToken(const QString &token);

    // The device description (device/devicedescription.cpp): {"device": {"os", "os_version",
    // "model", "manufacturer"}}, as the registration sends it.
    BVTParameters deviceParams() const;

    // Registration and assignment (device/registration.cpp).

    // Registers the device with the service unless an identifier is stored, and stores the one the
    // service issues before calling success. With an identifier stored, only a log line is written
    // and no callback is called.
    void initDevice();
    void initDevice(const BVTSuccessBlock &success);
    void initDevice(const BVTSuccessBlock &success, const BVTFailureBlock &failure);

    // Releases the device from its user; on success the stored user identifier is removed.
    void unassignDevice();
    void unassignDevice(const BVTSuccessBlock &success);
    void unassignDevice(const BVTSuccessBlock &success, const BVTFailureBlock &failure);

    // Ties the device to the host's user; on success the identifier given is stored. A null
    // identifier throws std::invalid_argument before anything is sent.
    void assignDeviceToUser(const QString &userIdentifier);
    void assignDeviceToUser(const QString &userIdentifier, const BVTSuccessBlock &success);
    void assignDeviceToUser(const QString &userIdentifier, const BVTSuccessBlock &success,
                            const BVTFailureBlock &failure);

private:
    class Private;

    BVTManager();

    void send(const bvt::Verb &verb, const QString &path, const BVTParameters &parameters,
              const BVTSuccessBlock &success, const BVTFailureBlock &failure);

    const std::unique_ptr<Private> d;
};
