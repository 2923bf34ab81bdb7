#pragma once

#include <Brevanti/BVTTypes.h>

#include <QDateTime>
#include <QString>
#include <QVariantMap>

#include <memory>

// The library's one manager: the client credentials, the service's base URL and the cached access
// token. Every request to the service is made by it. Use it through the facade BVT; it is created
// with the static factory initWithLaunchOptions and shared, each request keeping it alive until its
// callbacks have run.
class BVTManager : public std::enable_shared_from_this<BVTManager>
{
public:
    // Builds a manager holding the credentials and the service's base URL. The launch options are
    // accepted and ignored; the credentials are not checked until the first token request.
    static std::shared_ptr<BVTManager> initWithLaunchOptions(const QVariantMap &launchOptions,
                                                             const QString &clientId,
                                                             const QString &clientSecret);
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

    // Makes sure a valid access token is held, fetching one when none is. success receives
    // {"message": "Existing access token"} or {"message": "Updated access token"}; failure
    // receives the failed token request's error. At most one of them is called, once, later or
    // (for a valid token) at once.
    void verifyAuthenticated(const BVTSuccessBlock &success, const BVTErrorBlock &failure);

    // Authenticated requests. The path is appended to origin as it stands; the parameters go
    // form-encoded into the query (GET) or the body (POST, PATCH). When no token can be had only a
    // log line is written and neither callback is called.
    void getUrl(const QString &path, const BVTParameters &parameters,
                const BVTSuccessBlock &success, const BVTFailureBlock &failure);
    void postUrl(const QString &path, const BVTParameters &parameters,
                 const BVTSuccessBlock &success, const BVTFailureBlock &failure);
    void patchUrl(const QString &path, const BVTParameters &parameters,
                  const BVTSuccessBlock &success, const BVTFailureBlock &failure);

private:
    BVTManager();

    enum class Verb { Get, Post, Patch };
    void send(Verb verb, const QString &path, const BVTParameters &parameters,
              const BVTSuccessBlock &success, const BVTFailureBlock &failure);
    QString basicCredentials() const;

    QString m_clientId;
    QString m_clientSecret;
    QString m_origin;
    QString m_accessToken;
    QDateTime m_accessTokenExpires;
    QString m_currentUser;
};
