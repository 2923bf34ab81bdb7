#include "httpclient.h"

#include <Brevanti/BVT.h>

#include <QCoreApplication>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QPointer>

namespace bvt {

namespace {

QPointer<QNetworkAccessManager> hostManager;
QPointer<QNetworkAccessManager> builtInManager;
int transferTimeoutMs = HttpClient::defaultTimeoutMs;

// Errors of the connection itself, as opposed to the ones Qt derives from an HTTP status, which the
// status already tells.
bool isTransportError(QNetworkReply::NetworkError error)
{
    return error != QNetworkReply::NoError
            && (error < QNetworkReply::ContentAccessDenied
                || (error >= QNetworkReply::ProtocolUnknownError
                    && error <= QNetworkReply::ProtocolFailure));
}

} // namespace

QNetworkAccessManager *HttpClient::networkAccessManager()
{
    if (hostManager)
        return hostManager;
    if (!builtInManager) {
        // Parented to the application so that it goes before the application does.
        builtInManager = new QNetworkAccessManager(QCoreApplication::instance());
    }
    return builtInManager;
}

void HttpClient::send(const HttpRequest &request, const Completion &done)
{
    QNetworkRequest networkRequest(request.url);
    for (const auto &[name, value] : request.headers)
        networkRequest.setRawHeader(name, value);
    networkRequest.setTransferTimeout(transferTimeoutMs);

    QNetworkAccessManager *manager = networkAccessManager();
    QNetworkReply *reply = request.method == "GET"
            ? manager->get(networkRequest)
            : manager->sendCustomRequest(networkRequest, request.method, request.body);

    QObject::connect(reply, &QNetworkReply::finished, reply, [reply, done] {
        reply->deleteLater();
        const QVariant status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute);
        const int transportError = isTransportError(reply->error()) ? int(reply->error()) : 0;
        // Without an answer there is nothing to read (an aborted reply is no longer open).
        const QByteArray body = status.isValid() ? reply->readAll() : QByteArray();
        done(JsonResponse::judge(status.isValid() ? status.toInt() : 0,
                                 reply->rawHeader("Content-Type"), body, transportError,
                                 reply->errorString()));
    });
}

int HttpClient::timeoutMs()
{
    return transferTimeoutMs;
}

void HttpClient::setTimeoutMs(int milliseconds)
{
    transferTimeoutMs = milliseconds;
}

void setNetworkAccessManager(QNetworkAccessManager *manager)
{
    hostManager = manager;
}

} // namespace bvt
