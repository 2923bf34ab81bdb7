#include "httpclient.h"

#include <Brevanti/Network.h>

#include <QCoreApplication>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QPointer>
#include <QTimer>

#include <algorithm>
#include <cstring>
#include <memory>

namespace bvt {

namespace {

QPointer<QNetworkAccessManager> hostManager;
QPointer<QNetworkAccessManager> builtInManager;
int exchangeTimeoutMs = HttpClient::defaultTimeoutMs;
qint64 answerBytesLimit = HttpClient::defaultAnswerLimit;

// Errors of the connection itself, as opposed to the ones Qt derives from an HTTP status, which the
// status already tells.
bool isTransportError(QNetworkReply::NetworkError error)
{
    return error != QNetworkReply::NoError
            && (error < QNetworkReply::ContentAccessDenied
                || (error >= QNetworkReply::ProtocolUnknownError
                    && error <= QNetworkReply::ProtocolFailure));
}

// A request body that can be read only once. When a connection drops before the answer, Qt 6.4
// sends the request again on a new one, POST and PATCH included; with a body it cannot rewind, it
// fails the request instead, so each call reaches the service at most once.
class OneShotBody : public QIODevice
{
public:
    explicit OneShotBody(const QByteArray &body) : m_body(body) { open(QIODevice::ReadOnly); }

    bool isSequential() const override { return true; }
    bool reset() override { return false; }
    qint64 bytesAvailable() const override
    {
        return m_body.size() - m_read + QIODevice::bytesAvailable();
    }

protected:
    qint64 readData(char *data, qint64 maxSize) override
    {
        const qint64 count = qMin(maxSize, qint64(m_body.size()) - m_read);
        memcpy(data, m_body.constData() + m_read, size_t(count));
        m_read += count;
        return count;
    }
    qint64 writeData(const char *, qint64) override { return -1; }

private:
    const QByteArray m_body;
    qint64 m_read = 0;
};

// What one exchange has received so far, kept outside the reply so that an answer cut short (a
// time-out aborts the reply and discards what it buffered) still has its text, and so that a reply
// destroyed with its manager still reports once.
struct Exchange
{
    HttpClient::Completion done;
    QByteArray body;
    QString stopped;            // why the library ended the exchange itself; empty when it did not
    bool answerRefused = false; // stopped because of the answer, which then counts as none
    bool finished = false;

    void finish(const JsonResponse &response)
    {
        if (finished)
            return;
        finished = true;
        done(response);
    }
};

bool isDecimal(const QByteArray &text)
{
    return !text.isEmpty()
            && std::all_of(text.cbegin(), text.cend(), [](char c) { return c >= '0' && c <= '9'; });
}

// Why the head of an answer cannot be trusted, or an empty string. Qt joins a repeated header's
// values with ", ", so two lengths show as one value that is no number; a length beside chunks
// leaves the body's end to whichever the reader believes.
QString headProblem(const QNetworkReply *reply)
{
    if (!reply->hasRawHeader("Content-Length"))
        return QString();
    const QByteArray length = reply->rawHeader("Content-Length");
    if (!isDecimal(length))
        return QStringLiteral("The answer gives its length as \"%1\"")
                .arg(QString::fromLatin1(length));
    if (reply->hasRawHeader("Transfer-Encoding"))
        return QStringLiteral("The answer gives both a length and chunks");
    if (length.size() > 18 || length.toLongLong() > HttpClient::answerLimit())
        return QStringLiteral("The answer announces %1 bytes, more than the %2 the library reads")
                .arg(QString::fromLatin1(length))
                .arg(HttpClient::answerLimit());
    return QString();
}

} // namespace

BVTError unsendableTokenError()
{
    return {QNetworkReply::ProtocolInvalidOperationError,
            QStringLiteral("The access token holds a line break or another control character "
                           "and cannot be sent")};
}

bool HttpClient::isSafeHeaderValue(const QByteArray &value)
{
    // A line break would end the header early and start another (or a second request); NUL ends
    // it for many servers. Tab is the one control character a header value may hold.
    return std::none_of(value.cbegin(), value.cend(),
                        [](char c) { return (uchar(c) < 0x20 && c != '\t') || uchar(c) == 0x7f; });
}

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
    // An answer is judged where it was asked for: a redirect would carry the credentials to
    // whichever host the Location names, and turn a PATCH into a GET.
    networkRequest.setAttribute(QNetworkRequest::RedirectPolicyAttribute,
                                QNetworkRequest::ManualRedirectPolicy);

    // A GET goes as GETs do, without a body, so that Qt may send it again on a fresh connection
    // when a kept-alive one turns out closed. Every other request goes with a body it can read
    // only once, so that it reaches the service at most once.
    QNetworkAccessManager *manager = networkAccessManager();
    QNetworkReply *reply = nullptr;
    if (request.method == "GET") {
        reply = manager->get(networkRequest);
    } else {
        auto *body = new OneShotBody(request.body);
        networkRequest.setHeader(QNetworkRequest::ContentLengthHeader, request.body.size());
        networkRequest.setAttribute(QNetworkRequest::DoNotBufferUploadDataAttribute, true);
        reply = manager->sendCustomRequest(networkRequest, request.method, body);
        body->setParent(reply);
    }
    // Qt reads ahead of the library no further than this.
    reply->setReadBufferSize(1024 * 1024);

    auto exchange = std::make_shared<Exchange>();
    exchange->done = done;
    // Aborting finishes the reply at once, and closes its connection where Qt still reads the
    // answer from it.
    const auto stop = [reply, exchange](const QString &why, bool answerRefused) {
        exchange->stopped = why;
        exchange->answerRefused = answerRefused;
        if (answerRefused)
            exchange->body = QByteArray();
        reply->abort();
    };
    const auto refuse = [stop](const QString &why) { stop(why, true); };
    // One deadline for the whole exchange: Qt's transfer time-out starts again with every byte, so
    // an answer trickled in byte by byte would never end. What came before it still counts.
    auto *deadline = new QTimer(reply);
    deadline->setSingleShot(true);
    QObject::connect(deadline, &QTimer::timeout, reply, [stop] {
        stop(QStringLiteral("The answer did not arrive within %1 ms").arg(exchangeTimeoutMs),
             false);
    });
    deadline->start(exchangeTimeoutMs);
    QObject::connect(reply, &QNetworkReply::metaDataChanged, reply, [reply, refuse] {
        if (const QString problem = headProblem(reply); !problem.isEmpty())
            refuse(problem);
    });
    QObject::connect(reply, &QIODevice::readyRead, reply, [reply, exchange, refuse] {
        exchange->body += reply->readAll();
        if (exchange->body.size() > answerLimit())
            refuse(QStringLiteral("The answer is larger than the %1 bytes the library reads")
                           .arg(answerLimit()));
    });
    QObject::connect(reply, &QNetworkReply::finished, reply, [reply, exchange] {
        reply->deleteLater();
        if (exchange->answerRefused)
            return exchange->finish(JsonResponse::judge(0, {}, {}, QNetworkReply::ProtocolFailure,
                                                        exchange->stopped));
        if (reply->isOpen())
            exchange->body += reply->readAll();
        const QVariant status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute);
        QNetworkReply::NetworkError error = reply->error();
        // Qt tells of the second sending that the one-shot body refused; what happened is that
        // the connection closed before the answer.
        const bool resendRefused = error == QNetworkReply::ContentReSendError;
        if (resendRefused)
            error = QNetworkReply::RemoteHostClosedError;
        // Without an answer every error is the connection's; with one, only a transport error
        // (a reset or time-out after the headers) adds to what the status tells.
        const bool connectionFailed = !status.isValid() || isTransportError(error);
        QString message;
        if (resendRefused)
            message = QStringLiteral("The connection closed before the answer arrived");
        else if (!exchange->stopped.isEmpty())
            message = exchange->stopped;
        else if (connectionFailed)
            message = reply->errorString();
        const int transportError = connectionFailed ? int(error) : 0;
        exchange->finish(JsonResponse::judge(status.isValid() ? status.toInt() : 0,
                                             reply->rawHeader("Content-Type"), exchange->body,
                                             transportError, message));
    });
    // A host that deletes its network access manager deletes the replies under way without
    // finishing them. The outcome is delivered from the event loop, not from inside that delete.
    QObject::connect(reply, &QObject::destroyed, [exchange] {
        QCoreApplication *application = QCoreApplication::instance();
        if (exchange->finished || !application)
            return;
        QMetaObject::invokeMethod(
                application,
                [exchange] {
                    exchange->finish(JsonResponse::judge(
                            0, {}, {}, QNetworkReply::OperationCanceledError,
                            QStringLiteral("The network access manager was deleted before the "
                                           "answer arrived")));
                },
                Qt::QueuedConnection);
    });
}

qint64 HttpClient::answerLimit()
{
    return answerBytesLimit;
}

void HttpClient::setAnswerLimit(qint64 bytes)
{
    answerBytesLimit = bytes;
}

int HttpClient::timeoutMs()
{
    return exchangeTimeoutMs;
}

void HttpClient::setTimeoutMs(int milliseconds)
{
    exchangeTimeoutMs = milliseconds;
}

void setNetworkAccessManager(QNetworkAccessManager *manager)
{
    hostManager = manager;
}

} // namespace bvt
