#pragma once

#include "core/internalexport.h"
#include "outcome.h"

#include <Brevanti/BVTTypes.h>

#include <QDateTime>
#include <QString>
#include <QUrl>

#include <memory>

namespace bvt {

struct Verb;

// One connection to the service: the client credentials, the service's base URL and the cached
// access token, with the authenticated requests made over them. Every request keeps its session
// alive until its completion has run.
class BREVANTI_CORE_INTERNAL_EXPORT Session : public std::enable_shared_from_this<Session>
{
public:
    // A session with the credentials and the library's own origin.
    static std::shared_ptr<Session> create(const QString &clientId, const QString &clientSecret);

    QString clientId() const { return m_clientId; }
    void setClientId(const QString &clientId);
    QString clientSecret() const { return m_clientSecret; }
    void setClientSecret(const QString &clientSecret);

    QString origin;
    QString accessToken;
    QDateTime accessTokenExpires;
    QString currentUser; // carried for the host, never read

    // Makes sure a valid token is held: ready(true) once one was fetched, ready(false) at once
    // when one is held; failed with the token request's error.
    void verifyAuthenticated(const std::function<void(bool fetched)> &ready,
                             const std::function<void(const BVTError &error)> &failed);

    // An authenticated request of a path of the service, with the library's log lines around it;
    // done hears its outcome, also when no token could be had or nothing was sent.
    void send(const Verb &verb, const QString &path, const BVTParameters &parameters,
              const Completion &done);

private:
    Session() = default;
    bool holdsValidToken() const;
    // The origin parsed, once for each value it takes.
    const QUrl &originUrl() const;
    void updateBasicCredentials();

    QString m_clientId;
    QString m_clientSecret;
    QString m_basicCredentials; // Base64 of "id:secret", kept with them: every GET logs it
    mutable QString m_parsedOrigin;
    mutable QUrl m_originUrl;
};

} // namespace bvt
