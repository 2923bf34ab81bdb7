#include "service.h"

#include "admin.h"
#include "adminguard.h"
#include "answer.h"
#include "faulttable.h"
#include "framing.h"
#include "httpfront.h"
#include "idlewatch.h"
#include "inspector.h"
#include "intake.h"
#include "listeners.h"
#include "reply.h"
#include "request.h"
#include "requestrecord.h"
#include "routes.h"
#include "state.h"
#include "statefile.h"

#include <QHttpServerRequest>
#include <QLoggingCategory>
#include <QMetaEnum>
#include <QPointer>
#include <QSslCertificate>
#include <QSslConfiguration>
#include <QSslKey>
#include <QSslServer>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTimer>

#include <optional>

namespace bvtsim {

// Never the default category: tests read the client library's log lines from that one.
Q_LOGGING_CATEGORY(lcSim, "brevanti.sim")

namespace {

const char ConnectionProperty[] = "bvtsimConnection";

QByteArray methodName(QHttpServerRequest::Method method)
{
    const char *key = QMetaEnum::fromType<QHttpServerRequest::Method>().valueToKey(int(method));
    return QByteArray(key ? key : "Unknown").toUpper();
}

QString reachableHost(const QHostAddress &address)
{
    // A wildcard address is reached through the loopback address of its family.
    if (address == QHostAddress::AnyIPv6)
        return QStringLiteral("::1");
    if (address == QHostAddress::Any || address == QHostAddress::AnyIPv4)
        return QStringLiteral("127.0.0.1");
    return address.toString();
}

} // namespace

// The service on the wire: it reads each request off its connection, records it, meets it with
// its fault or hands it to the routes, saves the state they changed, and writes the answer.
class ServicePrivate
{
public:
    explicit ServicePrivate(Service *service);

    bool start(std::unique_ptr<QTcpServer> server, const QHostAddress &address, quint16 port);
    void accept(QTcpSocket *socket);
    void handle(const QHttpServerRequest &request, QTcpSocket *socket);
    Reply serve(const RecordedRequest &request, QTcpSocket *socket);
    Answer dispatch(const RecordedRequest &request);
    Answer changing(const std::function<Answer()> &change);
    bool save();

    Service *q;
    ServiceState state;
    Routes routes;
    FaultTable faults;
    RequestRecord record;
    AdminRoutes admin;
    Inspector inspector{state};
    bool adminEnabled = false;
    std::optional<QDateTime> clock;
    QString stateFile;
    int connections = 0; // outlives front, whose servers count into it
    std::chrono::milliseconds idleTimeout = std::chrono::seconds(30);
    RequestLimits limits;
    HttpFront front;
    QTcpServer *tcp = nullptr; // owned by front
};

ServicePrivate::ServicePrivate(Service *service)
    : q(service),
      routes(state, [service] { return service->now(); }),
      admin(faults, record),
      front([this](const QHttpServerRequest &request, QTcpSocket *socket) {
          handle(request, socket);
      })
{ }

bool ServicePrivate::start(std::unique_ptr<QTcpServer> server, const QHostAddress &address,
                           quint16 port)
{
    if (!server->listen(address, port))
        return false;
    tcp = server.release();
    front.bind(tcp);
    return true;
}

void ServicePrivate::accept(QTcpSocket *socket)
{
    socket->setProperty(ConnectionProperty, ++connections);
    IdleWatch::watch(socket, idleTimeout);
    Intake::watch(socket, limits);
}

void ServicePrivate::handle(const QHttpServerRequest &request, QTcpSocket *socket)
{
    // The HTTP layer may still hand over what followed a request the service closed for.
    if (socket->state() != QAbstractSocket::ConnectedState)
        return;
    RecordedRequest recorded;
    recorded.method = methodName(request.method());
    recorded.path = request.url().path(QUrl::FullyEncoded);
    recorded.query = request.url().query(QUrl::FullyEncoded).toUtf8();
    recorded.headers = request.headers();
    recorded.body = request.body();
    recorded.connection = socket->property(ConnectionProperty).toInt();
    recorded.received = QDateTime::currentDateTimeUtc();

    const Reply reply = serve(recorded, socket);
    if (reply.eventStream)
        return inspector.stream(socket);
    IdleWatch::hold(socket);
    const auto act = [socket = QPointer<QTcpSocket>(socket), method = recorded.method, reply]() {
        if (!socket || socket->state() != QAbstractSocket::ConnectedState)
            return;
        IdleWatch::release(socket);
        respond(socket, method, reply);
    };
    if (reply.delayMs > 0)
        QTimer::singleShot(reply.delayMs, &front, act);
    else
        act();
}

Reply ServicePrivate::serve(const RecordedRequest &request, QTcpSocket *socket)
{
    const bool adminRequest = adminEnabled && AdminRoutes::covers(request.path);
    const int index = adminRequest ? -1 : record.add(request);
    if (!adminRequest)
        Q_EMIT q->requestRecorded(index);
    if (const QString problem = framingProblem(request.headers); !problem.isEmpty()) {
        Reply reply = replyOf(error(400, "bad_framing", problem));
        reply.close = true;
        return reply;
    }
    Reply reply;
    if (adminRequest) {
        // Only the machine itself may change how the service behaves.
        const QString refusal = adminRefusal(request, socket->peerAddress(), q->port());
        if (!refusal.isEmpty())
            reply = replyOf(error(403, "forbidden", refusal));
        else if (Inspector::isEventStream(request))
            reply.eventStream = true;
        else if (const std::optional<Reply> page = Inspector::file(request.path))
            reply = *page;
        else if (Inspector::covers(request.path))
            reply = replyOf(changing([&] { return inspector.answer(request); }));
        else
            reply = replyOf(admin.answer(request));
    } else if (const std::optional<Fault> fault = faults.take(request.method, request.path)) {
        reply = fault->applyTo(fault->replacesAnswer() ? Reply() : replyOf(dispatch(request)));
    } else {
        reply = replyOf(dispatch(request));
    }
    reply.close = wantsClose(request.headers);
    if (index >= 0) {
        record.answered(index, reply.dropConnection ? 0 : reply.status, reply.body);
        inspector.tellRequest(record.masked(index));
    }
    return reply;
}

Answer ServicePrivate::dispatch(const RecordedRequest &request)
{
    return changing([&] { return routes.answer(Request::of(request)); });
}

Answer ServicePrivate::changing(const std::function<Answer()> &change)
{
    // A change that cannot be saved is undone, so that the service holds what its file holds and
    // a retry makes the whole change again. The copy is cheap until the change detaches it.
    const ServiceState before = state;
    Answer answer = change();
    if (state.revision() == before.revision())
        return answer;
    if (stateFile.isEmpty() || save()) {
        inspector.tellStateChanged();
        return answer;
    }
    state = before;
    return error(503, "state_not_saved",
                 QStringLiteral("The change could not be saved to the state file; it is undone."));
}

bool ServicePrivate::save()
{
    state.dropExpiredTokens(q->now());
    QString problem;
    if (writeStateFile(stateFile, state.toJson(), &problem))
        return true;
    qCWarning(lcSim).noquote() << "cannot write state file" << stateFile
                               << "(" + problem + "); the change is undone and answered 503";
    return false;
}

Service::Service(QObject *parent) : QObject(parent), d(std::make_unique<ServicePrivate>(this)) { }

Service::~Service() = default;

bool Service::listen(const QHostAddress &address, quint16 port)
{
    return d->start(plainListener([this](QTcpSocket *socket) { d->accept(socket); }), address,
                    port);
}

bool Service::listenTls(const QSslCertificate &certificate, const QSslKey &key,
                        const QHostAddress &address, quint16 port)
{
    if (certificate.isNull() || key.isNull())
        return false;
    QSslConfiguration configuration;
    configuration.setLocalCertificate(certificate);
    configuration.setPrivateKey(key);
    return d->start(tlsListener([this](QTcpSocket *socket) { d->accept(socket); }, configuration),
                    address, port);
}

quint16 Service::port() const
{
    return d->tcp ? d->tcp->serverPort() : 0;
}

QUrl Service::baseUrl() const
{
    QUrl url;
    url.setScheme(qobject_cast<const QSslServer *>(d->tcp) ? QStringLiteral("https")
                                                           : QStringLiteral("http"));
    url.setHost(reachableHost(d->tcp ? d->tcp->serverAddress()
                                     : QHostAddress(QHostAddress::LocalHost)));
    url.setPort(port());
    return url;
}

void Service::addClient(const QString &id, const QString &secret)
{
    d->routes.addClient(id, secret);
}

void Service::setTokenLifetime(int seconds)
{
    d->routes.setTokenLifetime(seconds);
}

void Service::setClock(const QDateTime &now)
{
    d->clock = now;
}

void Service::clearClock()
{
    d->clock.reset();
}

QDateTime Service::now() const
{
    return d->clock ? *d->clock : QDateTime::currentDateTimeUtc();
}

bool Service::setStateFile(const QString &path, QString *errorMessage)
{
    const std::optional<QJsonObject> saved = readStateFile(path, errorMessage);
    if (!saved)
        return false;
    d->state.load(*saved);
    d->stateFile = path;
    return true;
}

QJsonObject Service::device(const QString &uuid) const
{
    return d->state.device(uuid);
}

QStringList Service::deviceIds() const
{
    return d->state.deviceIds();
}

bool Service::setCatalogue(const QJsonArray &catalogue)
{
    return d->state.setCatalogue(catalogue);
}

QJsonArray Service::catalogue() const
{
    return d->state.catalogue();
}

QJsonArray Service::preferenceDocument(const QString &deviceUuid) const
{
    return d->state.preferenceDocument(deviceUuid);
}

void Service::setFault(const QByteArray &method, const QString &path, const Fault &fault)
{
    d->faults.set(method, path, fault);
}

void Service::clearFaults()
{
    d->faults.clear();
}

QList<RecordedRequest> Service::requests() const
{
    return d->record.requests();
}

void Service::clearRequests()
{
    d->record.clear();
}

void Service::setRequestLimit(int count)
{
    d->record.setCountLimit(count);
}

void Service::setRequestByteLimit(qsizetype bytes)
{
    d->record.setByteLimit(bytes);
}

void Service::setRecordedBodyLimit(qsizetype bytes)
{
    d->record.setBodyLimit(bytes);
}

void Service::setIdleTimeout(std::chrono::milliseconds timeout)
{
    d->idleTimeout = timeout;
}

void Service::setAdminEnabled(bool enabled)
{
    d->adminEnabled = enabled;
}

void Service::setHeaderLimit(qsizetype bytes)
{
    d->limits.headerBytes = std::max<qsizetype>(bytes, 1);
}

void Service::setBodyLimit(qsizetype bytes)
{
    d->limits.bodyBytes = std::max<qsizetype>(bytes, 0);
}

void Service::setHeaderTimeout(std::chrono::milliseconds timeout)
{
    d->limits.headerTimeout = timeout;
}

int Service::connectionCount() const
{
    return d->connections;
}

} // namespace bvtsim
