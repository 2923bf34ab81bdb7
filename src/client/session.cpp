#include "session.h"

#include "core/clock.h"
#include "core/log.h"
#include "formencoder.h"
#include "httpclient.h"
#include "origin.h"
#include "tokenresponse.h"
#include "verb.h"

#include <QTimer>

namespace bvt {

const Verb Verb::get{"GET", "application/json;", true, true, nullptr, nullptr};
const Verb Verb::post{
        "POST",         "application/x-www-form-urlencoded", false, false, "Post Success: %@",
        "Post Fail: %@"};
const Verb Verb::patch{
        "PATCH",         "application/x-www-form-urlencoded", false, false, "Patch Success: %@",
        "Patch Fail: %@"};

std::shared_ptr<Session> Session::create(const QString &clientId, const QString &clientSecret)
{
    std::shared_ptr<Session> session(new Session);
    session->m_clientId = clientId;
    session->m_clientSecret = clientSecret;
    session->updateBasicCredentials();
    session->origin = serviceOrigin();
    return session;
}

void Session::setClientId(const QString &clientId)
{
    m_clientId = clientId;
    updateBasicCredentials();
}

void Session::setClientSecret(const QString &clientSecret)
{
    m_clientSecret = clientSecret;
    updateBasicCredentials();
}

void Session::updateBasicCredentials()
{
    const QString credentials =
            formatLine("%@:%@", {describe(m_clientId), describe(m_clientSecret)});
    m_basicCredentials = QString::fromLatin1(credentials.toUtf8().toBase64());
}

bool Session::holdsValidToken() const
{
    // Valid up to its last instant, with no margin: only an expiry strictly later than now counts.
    return accessTokenExpires.isValid() && accessTokenExpires > clock::now();
}

const QUrl &Session::originUrl() const
{
    if (m_parsedOrigin != origin || m_parsedOrigin.isNull() != origin.isNull()) {
        m_parsedOrigin = origin;
        m_originUrl = QUrl(origin);
    }
    return m_originUrl;
}

void Session::verifyAuthenticated(const std::function<void(bool fetched)> &ready,
                                  const std::function<void(const BVTError &error)> &failed)
{
    if (holdsValidToken()) {
        if (ready)
            ready(false);
        return;
    }

    accessToken = QString();
    accessTokenExpires = QDateTime();

    HttpRequest request;
    request.method = "POST";
    request.url = QUrl(formatLine("%@%@", {describe(origin), "/oauth/token"}));
    request.headers = {{"Authorization", "Basic " + m_basicCredentials.toLatin1()},
                       {"Accept", "application/json"},
                       {"Content-Type", "application/x-www-form-urlencoded"}};
    request.body = FormEncoder::encode(
            {{QStringLiteral("grant_type"), QStringLiteral("client_credentials")},
             {QStringLiteral("scope"), QStringLiteral("brevanti-sdk")}});

    HttpClient::send(request,
                     [self = shared_from_this(), ready, failed](const JsonResponse &response) {
                         if (!response.accepted) {
                             if (failed)
                                 failed(response.error);
                             return;
                         }
                         const TokenResponse token = TokenResponse::read(response.object);
                         // A token that cannot be sent in a header is no token: it is not kept, and
                         // the next call asks again.
                         if (!HttpClient::isSafeHeaderValue(token.accessToken.toUtf8())) {
                             if (failed)
                                 failed(unsendableTokenError());
                             return;
                         }
                         self->accessToken = token.accessToken;
                         self->accessTokenExpires = token.expires;
                         log("self.access_token: %@", self->accessToken);
                         log("self.access_token_expires: %@", self->accessTokenExpires);
                         if (ready)
                             ready(true);
                     });
}

void Session::send(const Verb &verb, const QString &path, const BVTParameters &parameters,
                   const Completion &done)
{
    const QString url = formatLine("%@%@", {describe(origin), describe(path)});
    log("Submit Url: %@", url);
    if (verb.logsCredentials)
        log("Authorization: %@", QStringLiteral("Basic ") + m_basicCredentials);
    // Joined with its query and parsed once: the URL that is checked is the one that is sent.
    const QByteArray form = FormEncoder::encode(parameters);
    QString target = url;
    if (verb.parametersInQuery && !form.isEmpty())
        target += (url.contains(u'?') ? u'&' : u'?') + QString::fromLatin1(form);
    const QUrl requestUrl(target);
    // The bearer token goes to the service alone, so a path that leads elsewhere sends nothing,
    // not even a token request. The caller hears of it later, as of any failure.
    if (!staysWithin(requestUrl, originUrl())) {
        log("Not sent: the URL leaves the service's origin: %@", url);
        QTimer::singleShot(0, [done] { done({Outcome::NotSent, {}}); });
        return;
    }

    const auto noToken = [done](const BVTError &error) {
        log("Failed to get access token: %@", error);
        JsonResponse why;
        why.error = error;
        done({Outcome::NoToken, why});
    };
    auto sendRequest = [self = shared_from_this(), &verb, requestUrl, form, done, noToken] {
        // A token the host set can still hold a line break; it never goes on the wire.
        const QByteArray bearer = "Bearer " + describe(self->accessToken).toUtf8();
        if (!HttpClient::isSafeHeaderValue(bearer))
            return noToken(unsendableTokenError());
        HttpRequest request;
        if (!verb.parametersInQuery)
            request.body = form;
        request.method = verb.method;
        request.url = requestUrl;
        request.headers = {{"Authorization", bearer},
                           {"Accept", vendorMediaType},
                           {"Content-Type", verb.contentType}};

        HttpClient::send(request, [&verb, done](const JsonResponse &response) {
            if (response.accepted) {
                if (verb.successLine)
                    log(verb.successLine, response.object);
            } else if (verb.failureLine) {
                log(verb.failureLine, response.error);
            }
            done({Outcome::Answered, response});
        });
    };

    // A valid token sends at once, without the answer verifyAuthenticated builds for its caller.
    if (holdsValidToken())
        sendRequest();
    else
        verifyAuthenticated([sendRequest](bool) { sendRequest(); }, noToken);
}

} // namespace bvt
