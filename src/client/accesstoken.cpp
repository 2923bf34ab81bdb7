#include "bvtmanagerprivate.h"

#include "core/clock.h"
#include "core/log.h"
#include "formencoder.h"
#include "httpclient.h"
#include "tokenresponse.h"

bool BVTManager::Private::holdsValidToken() const
{
    // Valid up to its last instant, with no margin: only an expiry strictly later than now counts.
    return accessTokenExpires.isValid() && accessTokenExpires > bvt::clock::now();
}

const QUrl &BVTManager::Private::originUrl() const
{
    if (m_parsedOrigin != origin || m_parsedOrigin.isNull() != origin.isNull()) {
        m_parsedOrigin = origin;
        m_originUrl = QUrl(origin);
    }
    return m_originUrl;
}

void BVTManager::verifyAuthenticated(const BVTSuccessBlock &success, const BVTErrorBlock &failure)
{
    if (d->holdsValidToken()) {
        if (success)
            success(QVariantMap{
                    {QStringLiteral("message"), QStringLiteral("Existing access token")}});
        return;
    }

    d->accessToken = QString();
    d->accessTokenExpires = QDateTime();

    bvt::HttpRequest request;
    request.method = "POST";
    request.url = QUrl(bvt::formatLine("%@%@", {bvt::describe(d->origin), "/oauth/token"}));
    request.headers = {{"Authorization", "Basic " + d->basicCredentials.toLatin1()},
                       {"Accept", "application/json"},
                       {"Content-Type", "application/x-www-form-urlencoded"}};
    request.body = bvt::FormEncoder::encode(
            {{QStringLiteral("grant_type"), QStringLiteral("client_credentials")},
             {QStringLiteral("scope"), QStringLiteral("brevanti-sdk")}});

    bvt::HttpClient::send(
            request,
            [self = shared_from_this(), success, failure](const bvt::JsonResponse &response) {
                if (!response.accepted) {
                    if (failure)
                        failure(response.error);
                    return;
                }
                const bvt::TokenResponse token = bvt::TokenResponse::read(response.object);
                // A token that cannot be sent in a header is no token: it is not kept, and the
                // next call asks again.
                if (!bvt::HttpClient::isSafeHeaderValue(token.accessToken.toUtf8())) {
                    if (failure)
                        failure(bvt::unsendableTokenError());
                    return;
                }
                self->d->accessToken = token.accessToken;
                self->d->accessTokenExpires = token.expires;
                bvt::log("self.access_token: %@", self->d->accessToken);
                bvt::log("self.access_token_expires: %@", self->d->accessTokenExpires);
                if (success)
                    success(QVariantMap{
                            {QStringLiteral("message"), QStringLiteral("Updated access token")}});
            });
}
