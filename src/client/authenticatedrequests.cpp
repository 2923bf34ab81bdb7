#include <Brevanti/BVTManager.h>

#include "core/log.h"
#include "formencoder.h"
#include "httpclient.h"
#include "origin.h"

void BVTManager::getUrl(const QString &path, const BVTParameters &parameters,
                        const BVTSuccessBlock &success, const BVTFailureBlock &failure)
{
    send(Verb::Get, path, parameters, success, failure);
}

void BVTManager::postUrl(const QString &path, const BVTParameters &parameters,
                         const BVTSuccessBlock &success, const BVTFailureBlock &failure)
{
    send(Verb::Post, path, parameters, success, failure);
}

void BVTManager::patchUrl(const QString &path, const BVTParameters &parameters,
                          const BVTSuccessBlock &success, const BVTFailureBlock &failure)
{
    send(Verb::Patch, path, parameters, success, failure);
}

void BVTManager::send(Verb verb, const QString &path, const BVTParameters &parameters,
                      const BVTSuccessBlock &success, const BVTFailureBlock &failure)
{
    const QString url = bvt::formatLine("%@%@", {bvt::describe(m_origin), bvt::describe(path)});
    bvt::log("Submit Url: %@", url);
    if (verb == Verb::Get) {
        // Only a GET writes the client credentials to the log; they are used for nothing else.
        bvt::log("Authorization: %@", QStringLiteral("Basic ") + basicCredentials());
    }

    const auto noToken = [](const BVTError &error) {
        bvt::log("Failed to get access token: %@", error);
    };
    auto sendRequest = [self = shared_from_this(), verb, url, parameters, success, failure,
                        noToken](const QVariant &) {
        // A token the host set can still hold a line break; it never goes on the wire.
        const QByteArray bearer = "Bearer " + bvt::describe(self->m_accessToken).toUtf8();
        if (!bvt::HttpClient::isSafeHeaderValue(bearer))
            return noToken(bvt::unsendableTokenError());
        bvt::HttpRequest request;
        const QByteArray form = bvt::FormEncoder::encode(parameters);
        QString target = url;
        if (verb == Verb::Get) {
            request.method = "GET";
            if (!form.isEmpty())
                target += (url.contains(u'?') ? u'&' : u'?') + QString::fromLatin1(form);
        } else {
            request.method = verb == Verb::Post ? "POST" : "PATCH";
            request.body = form;
        }
        request.url = QUrl(target);
        request.headers = {
                {"Authorization", bearer},
                {"Accept", bvt::vendorMediaType},
                {"Content-Type",
                 verb == Verb::Get ? "application/json;" : "application/x-www-form-urlencoded"}};

        bvt::HttpClient::send(request, [verb, success, failure](const bvt::JsonResponse &response) {
            if (response.accepted) {
                if (verb == Verb::Post)
                    bvt::log("Post Success: %@", response.object);
                else if (verb == Verb::Patch)
                    bvt::log("Patch Success: %@", response.object);
                if (success)
                    success(response.object);
                return;
            }
            if (verb == Verb::Post)
                bvt::log("Post Fail: %@", response.error);
            else if (verb == Verb::Patch)
                bvt::log("Patch Fail: %@", response.error);
            if (failure)
                failure(response.text);
        });
    };

    verifyAuthenticated(sendRequest, noToken);
}
