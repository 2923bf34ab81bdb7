#pragma once

#include "core/internalexport.h"

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
struct BREVANTI_CORE_INTERNAL_EXPORT HttpRequest
{
    QByteArray method; // "GET", "POST" or "PATCH"
    QUrl url;
    QList<QPair<QByteArray, QByteArray>> headers; // sent exactly as given
    QByteArray body;
};

// The error of an access token that holds a character a header cannot carry.
BREVANTI_CORE_INTERNAL_EXPORT BVTError unsendableTokenError();

class BREVANTI_CORE_INTERNAL_EXPORT HttpClient
{
public:
    using Completion = std::function<void(const JsonResponse &response)>;

    static constexpr int defaultTimeoutMs = 60000;
    // The most the library reads of one answer: many times the preference document of a large
    // account, which is the largest answer the service gives. Tests lower it.
    static constexpr qint64 defaultAnswerLimit = 16 * 1024 * 1024;
    static qint64 answerLimit();
    static void setAnswerLimit(qint64 bytes);

    // How long one exchange may take from sending to the last byte of the answer, however the
    // bytes trickle in; tests shorten it. A call that first fetches a token gives that exchange
    // the same time of its own.
    static int timeoutMs();
    static void setTimeoutMs(int milliseconds);

    // Sends the request and calls done exactly once, later, on the thread of the network access
    // manager (the main thread): also when the host deletes its manager while the request is under
    // way (as an answer that never arrived). Redirects are not followed. A POST or PATCH is never
    // sent a second time; a GET may be, once, by Qt, when its connection closes unanswered. An
    // answer that is late, larger than answerLimit or framed two ways (two lengths, or a length
    // beside chunks) fails as if none had arrived.
    static void send(const HttpRequest &request, const Completion &done);

    // Whether a header value can go on the wire as it stands: no line break, NUL or other control
    // character but tab, any of which would let the value write headers or requests of its own.
    static bool isSafeHeaderValue(const QByteArray &value);

    // The host's manager when one was set, otherwise the library's own, created on first use.
    static QNetworkAccessManager *networkAccessManager();
};

} // namespace bvt
