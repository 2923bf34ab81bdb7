#pragma once

#include "fault.h"
#include "recordedrequest.h"

#include <QDateTime>
#include <QHostAddress>
#include <QJsonArray>
#include <QJsonObject>
#include <QObject>
#include <QStringList>
#include <QUrl>

#include <chrono>
#include <memory>

class QSslCertificate;
class QSslKey;

namespace bvtsim {

class ServicePrivate;

// The local Brevanti service: the token endpoint, bearer-checked routes, request recording and
// per-route faults, on a real loopback socket.
class Service : public QObject
{
    Q_OBJECT
public:
    explicit Service(QObject *parent = nullptr);
    ~Service() override;

    // Starts listening; port 0 picks a free one. Returns false when the port cannot be bound.
    bool listen(const QHostAddress &address = QHostAddress::LocalHost, quint16 port = 0);
    // listen, serving HTTPS with the certificate and its private key; also false when either is
    // null.
    bool listenTls(const QSslCertificate &certificate, const QSslKey &key,
                   const QHostAddress &address = QHostAddress::LocalHost, quint16 port = 0);
    quint16 port() const;
    QUrl baseUrl() const; // "http://127.0.0.1:PORT" ("https" after listenTls), no trailing slash

    void addClient(const QString &id, const QString &secret);
    void setTokenLifetime(int seconds);  // "expires_in" of tokens issued from now on; default 7200
    void setClock(const QDateTime &now); // fixed instant for issuing and checking tokens
    void clearClock();                   // back to the system clock
    QDateTime now() const;

    // JSON file the service loads now (when it exists) and rewrites after every change, readable
    // by its owner alone. Returns false, with the reason in *errorMessage, leaving the file alone
    // and keeping no state file, when the path names something other than a regular file (a
    // symbolic link is followed), the file is not one the service wrote, or the path cannot be
    // written. A change that cannot be saved whole (a full disk) is undone and answered 503, with
    // a warning, and the file keeps the state before it.
    bool setStateFile(const QString &path, QString *errorMessage = nullptr);

    // The registered device with every member ("user" and "push_token" null when unset); an
    // empty object when the uuid is unknown.
    QJsonObject device(const QString &uuid) const;
    QStringList deviceIds() const; // in the order they were issued

    // Categories of preferences, each {"name", "key", "preferences": [{"name", "key", "enabled"}]}
    // with "enabled" the default state. Members other than the keys and "preferences" are served
    // as given, so odd documents can be served. Returns false, keeping the current catalogue, when
    // a key is not a non-empty string unique among its siblings or "preferences" is no array.
    bool setCatalogue(const QJsonArray &catalogue);
    QJsonArray catalogue() const;
    // What GET /preferences answers for the device: the catalogue with the states stored for its
    // user, or for the device while it has none; an empty array when the uuid is unknown.
    QJsonArray preferenceDocument(const QString &deviceUuid) const;

    // method "*" matches every method; path is without query.
    void setFault(const QByteArray &method, const QString &path, const Fault &fault);
    void clearFaults();

    // Closes connections accepted from now on once no byte has moved on them for timeout, except
    // while the service holds an answer (a delay fault); zero never closes. Default 30 s.
    void setIdleTimeout(std::chrono::milliseconds timeout);
    // Serves the routes under "/_sim/" to the machine itself (a loopback peer, a loopback Host, no
    // Origin of another site: adminguard.h): POST /_sim/faults (a fault as JSON), DELETE
    // /_sim/faults, GET /_sim/requests (credentials masked), DELETE /_sim/requests, and the
    // inspector's page and routes (inspector.h). They are neither recorded nor bearer-checked,
    // and no fault applies to them. Off by default: then "/_sim/..." is an ordinary path.
    void setAdminEnabled(bool enabled);

    // A request whose header section (request line and headers, the blank line included) is over
    // bytes gets 431, and one whose body is over bytes gets 413, at once when its Content-Length
    // says so; either way its connection is closed after the answer. Defaults 64 KiB and 1 MiB.
    // For connections accepted from now on.
    void setHeaderLimit(qsizetype bytes);
    void setBodyLimit(qsizetype bytes);
    // Answers 408 and closes the connection when a request's header section has not all arrived
    // timeout after its first byte; zero never. Default 10 s. For connections accepted from now on.
    void setHeaderTimeout(std::chrono::milliseconds timeout);

    // The request record keeps the most recent count requests (at least 1; default 10000), as
    // many as fit in bytes (default 64 MiB, counted as the requests came in, the newest always
    // kept), and at most bytes of each body (default 64 KiB), so that a long run stays bounded.
    void setRequestLimit(int count);
    void setRequestByteLimit(qsizetype bytes);
    void setRecordedBodyLimit(qsizetype bytes);
    QList<RecordedRequest> requests() const; // every header as it arrived, credentials too
    void clearRequests();
    int connectionCount() const; // TCP connections accepted since start

Q_SIGNALS:
    // A request was recorded: it is requests().at(index), the last, while the signal is emitted.
    // Once the record is full, by count or by bytes, the oldest requests are dropped first, so the
    // index then stays below the request limit, and every earlier request moves down.
    void requestRecorded(int index);

private:
    std::unique_ptr<ServicePrivate> d;
};

} // namespace bvtsim
