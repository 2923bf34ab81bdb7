#pragma once

#include "jsonresponse.h"

#include <QByteArray>
#include <QList>
#include <QPair>
#include <QUrl>

#include <functional>

class QNetworkAccessManager;

namespace bvt {

// One HTTP exchange with the service. Every request carries its own headers, so nothing carries
// over from one to the next; all of them share one network access manager, so connections and TLS
// sessions are reused.
struct HttpRequest
{
    QByteArray method; // "GET", "POST" or "PATCH"
    QUrl url;
    QList<QPair<QByteArray, QByteArray>> headers; // sent exactly as given
    QByteArray body;
};

class HttpClient
{
public:
    using Completion = std::function<void(const JsonResponse &response)>;

    static constexpr int defaultTimeoutMs = 60000;

    // How long a request may go without any data moving before it fails; tests shorten it.
    static int timeoutMs();
    static void setTimeoutMs(int milliseconds);

    // Sends the request and calls done exactly once, later, on the thread of the network access
    // manager (the main thread).
    static void send(const HttpRequest &request, const Completion &done);

    // The host's manager when one was set, otherwise the library's own, created on first use.
    static QNetworkAccessManager *networkAccessManager();
};

} // namespace bvt
