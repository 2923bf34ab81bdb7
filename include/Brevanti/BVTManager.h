#pragma once

/// \file
/// BVTManager, the library's one manager behind the facade BVT.

#include <Brevanti/brevanti_core_export.h>

#include <Brevanti/BVTTypes.h>

#include <QDateTime>
#include <QString>
#include <QVariantMap>

#include <memory>

#include <functional>

namespace bvt {
struct Outcome;
}

/// The library's one manager: the client credentials, the service's base URL, the cached access
/// token, the stored device and user identifiers, and the device's registration with the service.
/// Use it through the facade BVT; it is created with the static factory initWithLaunchOptions and
/// shared, each request keeping it alive until its callbacks have run.
class BREVANTI_CORE_EXPORT BVTManager : public std::enable_shared_from_this<BVTManager>
{
public:
    /// Builds a manager holding the credentials and the service's base URL, then starts the
    /// device's registration (initDevice). The launch options are accepted and ignored; the
    /// credentials are not checked until the first token request.
    static std::shared_ptr<BVTManager> initWithLaunchOptions(const QVariantMap &launchOptions,
                                                             const QString &clientId,
                                                             const QString &clientSecret);

    /// Runs when the last owner lets go: the facade BVT, a host that keeps the pointer, and each
    /// request under way until its callbacks have run.
    ~BVTManager();

    BVTManager(const BVTManager &) = delete;
    BVTManager &operator=(const BVTManager &) = delete;

    /// The client identifier, sent with the secret as Basic credentials in every token request
    /// (and, as the service's design has it, logged with every GET).
    ///@{
    QString clientId() const;
    void setClientId(const QString &clientId);
    ///@}
    /// The client secret, sent with the identifier.
    ///@{
    QString clientSecret() const;
    void setClientSecret(const QString &clientSecret);
    ///@}
    /// The service's base URL, to which every path is appended as it stands; the one the library
    /// was built with (BREVANTI_ORIGIN) unless set.
    ///@{
    QString origin() const;
    void setOrigin(const QString &origin);
    ///@}
    /// The cached access token, sent as the bearer of every authenticated request. One the host
    /// sets that holds a line break, NUL or another control character but tab is never sent.
    ///@{
    QString access_token() const;
    void setAccess_token(const QString &accessToken);
    ///@}
    /// When the cached access token expires; the token counts as valid only strictly before it,
    /// and an invalid time means there is none.
    ///@{
    QDateTime access_token_expires() const;
    void setAccess_token_expires(const QDateTime &expires);
    ///@}
    /// A user property the manager carries and never reads; the assigned user is currentUser().
    ///@{
    QString current_user() const;
    void setCurrent_user(const QString &currentUser);
    ///@}

    /// Makes sure a valid access token is held, fetching one when none is. success receives
    /// {"message": "Existing access token"} or {"message": "Updated access token"}; failure
    /// receives the failed token request's error. At most one of them is called, once, later or
    /// (for a valid token) at once.
    void verifyAuthenticated(const BVTSuccessBlock &success, const BVTErrorBlock &failure);

    /// An authenticated GET, POST or PATCH. The path is appended to origin as it stands; the
    /// parameters go form-encoded into the query (GET) or the body (POST, PATCH). When no token
    /// can be had only a log line is written and neither callback is called.
    ///@{
    void getUrl(const QString &path, const BVTParameters &parameters,
                const BVTSuccessBlock &success, const BVTFailureBlock &failure);
    void postUrl(const QString &path, const BVTParameters &parameters,
                 const BVTSuccessBlock &success, const BVTFailureBlock &failure);
    void patchUrl(const QString &path, const BVTParameters &parameters,
                  const BVTSuccessBlock &success, const BVTFailureBlock &failure);
    ///@}

    /// \name The identifier store
    /// Three strings kept in the application's settings between launches. The device identifier
    /// is written once (a second one is refused and logged); the user identifier and the device
    /// token are overwritten. A number stored reads back as its decimal text; a null value removes
    /// the entry.
    ///@{

    /// Stores the device identifier the service issued, unless one is stored already.
    void setBVTDeviceId(const QVariant &identifier);
    /// The stored device identifier; null when there is none.
    QString getBVTDeviceId() const;
    /// Removes the stored device identifier, so that the next initialisation registers again.
    void clearBVTDeviceId();
    /// Stores the identifier of the user the device is assigned to.
    void setBVTUserId(const QVariant &identifier);
    /// The stored user identifier; null when there is none.
    QString getBVTUserId() const;
    /// Removes the stored user identifier.
    void clearBVTUserId();
    /// Stores the push token the service accepted.
    void setBVTDeviceToken(const QVariant &token);
    /// The stored push token; null when there is none.
    QString getBVTDeviceToken() const;
    /// Removes the stored push token, so that the permission card shows again.
    void clearBVTDeviceToken();
    /// The stored device identifier (getBVTDeviceId).
    QString currentDevice() const;
    /// The stored user identifier (getBVTUserId).
    QString currentUser() const;
    /// The stored push token (getBVTDeviceToken).
    QString currentDeviceToken() const;
    /// Stores a push token (setBVTDeviceToken).
    void setCurrentDeviceToken(const QString &token);
    ///@}

    /// The device description: {"device": {"os", "os_version", "model", "manufacturer"}}, as the
    /// registration sends it.
    BVTParameters deviceParams() const;

    /// Registers the device with the service unless an identifier is stored, and stores the one
    /// the service issues before calling success. With an identifier stored, only a log line is
    /// written and no callback is called.
    ///@{
    void initDevice();
    void initDevice(const BVTSuccessBlock &success);
    void initDevice(const BVTSuccessBlock &success, const BVTFailureBlock &failure);
    ///@}

    /// Releases the device from its user; on success the stored user identifier is removed.
    ///@{
    void unassignDevice();
    void unassignDevice(const BVTSuccessBlock &success);
    void unassignDevice(const BVTSuccessBlock &success, const BVTFailureBlock &failure);
    ///@}

    /// Ties the device to the host's user; on success the identifier given is stored. A null
    /// identifier throws std::invalid_argument before anything is sent.
    ///@{
    void assignDeviceToUser(const QString &userIdentifier);
    void assignDeviceToUser(const QString &userIdentifier, const BVTSuccessBlock &success);
    void assignDeviceToUser(const QString &userIdentifier, const BVTSuccessBlock &success,
                            const BVTFailureBlock &failure);
    ///@}

private:
    class Private;

    BVTManager();

    // The callbacks as a call's completion that keeps this manager alive until they have run.
    std::function<void(const bvt::Outcome &)> callbacks(const BVTSuccessBlock &success,
                                                        const BVTFailureBlock &failure);

    const std::unique_ptr<Private> d;
};
