#include "bvtmanagerprivate.h"

#include "callwitness.h"
#include "core/log.h"
#include "formencoder.h"
#include "httpclient.h"
#include "origin.h"
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

} // namespace bvt

void BVTManager::getUrl(const QString &path, const BVTParameters &parameters,
                        const BVTSuccessBlock &success, const BVTFailureBlock &failure)
{
    send(bvt::Verb::get, path, parameters, success, failure);
}

void BVTManager::postUrl(const QString &path, const BVTParameters &parameters,
                         const BVTSuccessBlock &success, const BVTFailureBlock &failure)
{
    send(bvt::Verb::post, path, parameters, success, failure);
}

void BVTManager::patchUrl(const QString &path, const BVTParameters &parameters,
                          const BVTSuccessBlock &success, const BVTFailureBlock &failure)
{
    send(bvt::Verb::patch, path, parameters, success, failure);
}

void BVTManager::send(const bvt::Verb &verb, const QString &path, const BVTParameters &parameters,
                      const BVTSuccessBlock &success, const BVTFailureBlock &failure)
{
    // Told last, after the caller's callbacks and the store updates they make.
    const bvt::CallWitness::Report report = bvt::CallWitness::take();
    const QString url = bvt::formatLine("%@%@", {bvt::describe(d->origin), bvt::describe(path)});
    bvt::log("Submit Url: %@", url);
    if (verb.logsCredentials)
        bvt::log("Authorization: %@", QStringLiteral("Basic ") + d->basicCredentials);
    // Joined with its query and parsed once: the URL that is checked is the one that is sent.
    const QByteArray form = bvt::FormEncoder::encode(parameters);
    QString target = url;
    if (verb.parametersInQuery && !form.isEmpty())
        target += (url.contains(u'?') ? u'&' : u'?') + QString::fromLatin1(form);
    const QUrl requestUrl(target);
    // The bearer token goes to the service alone, so a path that leads elsewhere sends nothing,
    // not even a token request. The caller hears of it later, as of any failure.
    if (!bvt::staysWithin(requestUrl, d->originUrl())) {
        bvt::log("Not sent: the URL leaves the service's origin: %@", url);
        QTimer::singleShot(0, [failure, report] {
            if (failure)
                failure(QString());
            if (report)
                report({bvt::Outcome::NotSent, {}});
        });
        return;
    }

    const auto noToken = [report](const BVTError &error) {
        bvt::log("Failed to get access token: %@", error);
        if (report) {
            bvt::JsonResponse why;
            why.error = error;
            report({bvt::Outcome::NoToken, why});
        }
    };
    auto sendRequest = [self = shared_from_this(), &verb, requestUrl, form, success, failure,
                        noToken, report](const QVariant &) {
        // A token the host set can still hold a line break; it never goes on the wire.
        const QByteArray bearer = "Bearer " + bvt::describe(self->d->accessToken).toUtf8();
        if (!bvt::HttpClient::isSafeHeaderValue(bearer))
            return noToken(bvt::unsendableTokenError());
        bvt::HttpRequest request;
        if (!verb.parametersInQuery)
            request.body = form;
        request.method = verb.method;
        request.url = requestUrl;
        request.headers = {{"Authorization", bearer},
                           {"Accept", bvt::vendorMediaType},
                           {"Content-Type", verb.contentType}};

        bvt::HttpClient::send(request,
                              [&verb, success, failure, report](const bvt::JsonResponse &response) {
                                  if (response.accepted) {
                                      if (verb.successLine)
                                          bvt::log(verb.successLine, response.object);
                                      if (success)
                                          success(response.object);
                                  } else {
                                      if (verb.failureLine)
                                          bvt::log(verb.failureLine, response.error);
                                      if (failure)
                                          failure(response.text);
                                  }
                                  if (report)
                                      report({bvt::Outcome::Answered, response});
                              });
    };

    // A valid token sends at once, without the answer verifyAuthenticated builds for its caller.
    if (d->holdsValidToken())
        sendRequest(QVariant());
    else
        verifyAuthenticated(sendRequest, noToken);
}
