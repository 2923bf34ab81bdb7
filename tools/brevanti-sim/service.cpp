#include "service.h"

#include "admin.h"
#include "adminguard.h"
#include "answer.h"
#include "framing.h"
#include "idlewatch.h"
#include "intake.h"
#include "reply.h"
#include "statefile.h"

#include <QAbstractHttpServer>
#include <QFile>
#include <QHttpServerRequest>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLoggingCategory>
#include <QMetaEnum>
#include <QPointer>
#include <QRandomGenerator>
#include <QSet>
#include <QSslCertificate>
#include <QSslConfiguration>
#include <QSslKey>
#include <QSslServer>
#include <QSslSocket>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTimer>
#include <QUuid>

#include <algorithm>
#include <functional>
#include <optional>
#include <tuple>

namespace bvtsim {

// Never the default category: tests read the client library's log lines from that one.
Q_LOGGING_CATEGORY(lcSim, "brevanti.sim")

namespace {

const char ConnectionProperty[] = "bvtsimConnection";
const char TokenScope[] = "brevanti-sdk";

using Pairs = QList<QPair<QString, QString>>;

struct Route
{
    QByteArray method; // "*" matches every method
    QString path;
    bool needsBearer = true;
    std::function<Answer(const RecordedRequest &)> handler;
};

struct FaultEntry
{
    QByteArray method;
    QString path;
    Fault fault;
};

Answer deviceNotFound(const QString &uuid)
{
    return error(404, "device_not_found", QStringLiteral("No device has the uuid %1.").arg(uuid));
}

// Keys of the saved preference states: a device and a user may share an identifier.
QString deviceAddressee(const QString &uuid)
{
    return QLatin1String("device:") + uuid;
}

QString userAddressee(const QString &identifier)
{
    return QLatin1String("user:") + identifier;
}

// The member of objects whose "key" is key; an empty object when none is.
QJsonObject withKey(const QJsonArray &objects, const QString &key)
{
    for (const QJsonValue &value : objects) {
        if (value.toObject().value(QLatin1String("key")) == key)
            return value.toObject();
    }
    return QJsonObject();
}

// Categories and preferences are addressed by key, so each must have one of its own.
bool uniqueKeys(const QJsonArray &objects)
{
    QSet<QString> keys;
    for (const QJsonValue &value : objects) {
        const QString key = value.toObject().value(QLatin1String("key")).toString();
        if (key.isEmpty() || keys.contains(key))
            return false;
        keys.insert(key);
    }
    return true;
}

using AcceptHook = std::function<void(QTcpSocket *)>;

// Shows the service each connection as it is accepted, before the HTTP layer sees it.
class PlainServer : public QTcpServer
{
public:
    explicit PlainServer(AcceptHook accepted) : m_accepted(std::move(accepted)) { }

protected:
    void incomingConnection(qintptr descriptor) override
    {
        auto *socket = new QTcpSocket(this);
        socket->setSocketDescriptor(descriptor);
        m_accepted(socket);
        addPendingConnection(socket);
    }

private:
    AcceptHook m_accepted;
};

// PlainServer over TLS. QAbstractHttpServer::sslSetup reaches only the servers its own listen()
// makes, so a bound server has to encrypt by itself. Showing the connection at accept, before the
// handshake, counts the connections a client rejects too.
class TlsServer : public QSslServer
{
public:
    TlsServer(AcceptHook accepted, const QSslConfiguration &configuration)
    {
        setSslConfiguration(configuration);
        connect(this, &QSslServer::startedEncryptionHandshake, this,
                [accepted = std::move(accepted)](QSslSocket *socket) { accepted(socket); });
    }
};

// Hands each parsed request to the service together with its socket: answering on the socket
// directly is what lets the service send any status, truncate a body or drop the connection.
class HttpFront : public QAbstractHttpServer
{
public:
    explicit HttpFront(std::function<void(const QHttpServerRequest &, QTcpSocket *)> handler)
        : m_handler(std::move(handler))
    { }

protected:
    bool handleRequest(const QHttpServerRequest &request, QTcpSocket *socket) override
    {
        m_handler(request, socket);
        return true;
    }
    // Never called: handleRequest takes every request.
    void missingHandler(const QHttpServerRequest &, QTcpSocket *) override { }

private:
    std::function<void(const QHttpServerRequest &, QTcpSocket *)> m_handler;
};

QByteArray methodName(QHttpServerRequest::Method method)
{
    const char *key = QMetaEnum::fromType<QHttpServerRequest::Method>().valueToKey(int(method));
    return QByteArray(key ? key : "Unknown").toUpper();
}

// application/x-www-form-urlencoded, which is also how the service reads a query.
Pairs decodeForm(const QByteArray &encoded)
{
    const auto decode = [](QByteArray part) {
        return QString::fromUtf8(QByteArray::fromPercentEncoding(part.replace('+', ' ')));
    };
    Pairs pairs;
    for (const QByteArray &part : encoded.split('&')) {
        if (part.isEmpty())
            continue;
        const qsizetype equals = part.indexOf('=');
        if (equals < 0)
            pairs.append({decode(part), QString()});
        else
            pairs.append({decode(part.left(equals)), decode(part.mid(equals + 1))});
    }
    return pairs;
}

QString formValue(const Pairs &pairs, const QString &key)
{
    for (const auto &pair : pairs) {
        if (pair.first == key)
            return pair.second;
    }
    return QString();
}

bool hasField(const Pairs &pairs, const QString &key)
{
    return std::any_of(pairs.cbegin(), pairs.cend(),
                       [&key](const auto &pair) { return pair.first == key; });
}

// A key seen once maps to its value, a repeated key to the array of its values in order.
QJsonObject pairsObject(const Pairs &pairs)
{
    QJsonObject object;
    for (const auto &[key, value] : pairs) {
        const auto it = object.find(key);
        if (it == object.end()) {
            object.insert(key, value);
        } else if (it.value().isArray()) {
            QJsonArray values = it.value().toArray();
            values.append(value);
            it.value() = values;
        } else {
            it.value() = QJsonArray{it.value().toString(), value};
        }
    }
    return object;
}

bool isFormEncoded(const RecordedRequest &request)
{
    const QByteArray mediaType = request.header("Content-Type").split(';').first().trimmed();
    return mediaType.compare("application/x-www-form-urlencoded", Qt::CaseInsensitive) == 0;
}

Pairs formOf(const RecordedRequest &request)
{
    return isFormEncoded(request) ? decodeForm(request.body) : Pairs();
}

// The 422 for the first of keys that is absent or empty, or nothing when all are given.
std::optional<Answer> missingField(const Pairs &form, const QStringList &keys)
{
    for (const QString &key : keys) {
        if (formValue(form, key).isEmpty())
            return error(422, "missing_field", key + QLatin1String(" is missing"));
    }
    return std::nullopt;
}

QByteArray credentials(const RecordedRequest &request, const QByteArray &scheme)
{
    const QByteArray authorization = request.header("Authorization");
    const qsizetype space = authorization.indexOf(' ');
    if (space < 0 || authorization.left(space).compare(scheme, Qt::CaseInsensitive) != 0)
        return QByteArray();
    return authorization.mid(space + 1).trimmed();
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

// What a recorded request takes, counted as the bytes it came in: the record is bounded by it.
qsizetype recordSize(const RecordedRequest &request)
{
    qsizetype size = request.method.size() + request.path.size() + request.query.size()
            + request.body.size();
    for (const auto &[name, value] : request.headers)
        size += name.size() + value.size();
    return size;
}

} // namespace

QByteArray RecordedRequest::header(const QByteArray &name) const
{
    for (const auto &[headerName, value] : headers) {
        if (headerName.compare(name, Qt::CaseInsensitive) == 0)
            return value;
    }
    return QByteArray();
}

class ServicePrivate
{
public:
    explicit ServicePrivate(Service *service);

    void accept(QTcpSocket *socket);
    void handle(const QHttpServerRequest &request, QTcpSocket *socket);
    Reply serve(const RecordedRequest &request, QTcpSocket *socket);
    void record(RecordedRequest request);
    void trimRequests();
    std::optional<Fault> takeFault(const RecordedRequest &request);
    Answer dispatch(const RecordedRequest &request);
    bool bearerValid(const RecordedRequest &request) const;
    bool start(std::unique_ptr<QTcpServer> server, const QHostAddress &address, quint16 port);

    Answer issueToken(const RecordedRequest &request);
    Answer echo(const RecordedRequest &request);
    Answer registerDevice(const RecordedRequest &request);
    Answer setDeviceUser(const RecordedRequest &request, bool assign);
    Answer setPushToken(const RecordedRequest &request);
    Answer devicePreferences(const RecordedRequest &request);
    Answer setPreference(const RecordedRequest &request, bool enabled);

    QJsonArray preferenceDocument(const QString &uuid) const;

    void dropExpiredTokens();
    void loadState(const QJsonObject &state);
    void saveState(); // sets saveFailed when the file could not be written

    using Stored = std::tuple<QHash<QByteArray, qint64>, QHash<QString, QJsonObject>, QStringList,
                              QStringList, QJsonObject>;
    // What the state file holds, as references: assigning to it restores a copy.
    auto stored() { return std::tie(tokens, devices, deviceOrder, users, preferences); }

    Service *q;
    AdminRoutes admin;
    bool adminEnabled = false;
    int connections = 0; // outlives front, whose servers count into it
    std::chrono::milliseconds idleTimeout = std::chrono::seconds(30);
    RequestLimits limits;
    HttpFront front;
    QTcpServer *tcp = nullptr; // owned by front
    QList<Route> routes;
    QHash<QString, QString> clients; // id -> secret
    int tokenLifetime = 7200;
    std::optional<QDateTime> clock;
    QHash<QByteArray, qint64> tokens;    // token -> expiry, seconds since the epoch
    QHash<QString, QJsonObject> devices; // uuid -> record, as saved in the state file
    QStringList deviceOrder;             // uuids in the order they were issued
    QStringList users;                   // every user a device was ever assigned to
    QJsonArray catalogue;
    // addressee ("device:<uuid>", "user:<identifier>") -> category key -> preference key -> bool
    QJsonObject preferences;
    QString stateFile;
    bool saveFailed = false;
    QList<FaultEntry> faults;
    QList<RecordedRequest> requests;
    int requestLimit = 10000;
    qsizetype requestByteLimit = 64 * 1024 * 1024;
    qsizetype recordedBytes = 0; // what the requests in the record came in
    qsizetype recordedBodyLimit = 64 * 1024;
};

ServicePrivate::ServicePrivate(Service *service)
    : q(service),
      admin(*service),
      front([this](const QHttpServerRequest &request, QTcpSocket *socket) {
          handle(request, socket);
      })
{
    // Matched on method and exact encoded path; every route but the token one is bearer-checked.
    routes = {
            {"POST", QStringLiteral("/oauth/token"), false,
             [this](const RecordedRequest &r) { return issueToken(r); }},
            {"*", QStringLiteral("/echo"), true,
             [this](const RecordedRequest &r) { return echo(r); }},
            {"POST", QStringLiteral("/devices"), true,
             [this](const RecordedRequest &r) { return registerDevice(r); }},
            {"PATCH", QStringLiteral("/devices/assign"), true,
             [this](const RecordedRequest &r) { return setDeviceUser(r, true); }},
            {"PATCH", QStringLiteral("/devices/unassign"), true,
             [this](const RecordedRequest &r) { return setDeviceUser(r, false); }},
            {"PATCH", QStringLiteral("/devices/enable"), true,
             [this](const RecordedRequest &r) { return setPushToken(r); }},
            {"GET", QStringLiteral("/preferences"), true,
             [this](const RecordedRequest &r) { return devicePreferences(r); }},
            {"PATCH", QStringLiteral("/preferences/enable"), true,
             [this](const RecordedRequest &r) { return setPreference(r, true); }},
            {"PATCH", QStringLiteral("/preferences/disable"), true,
             [this](const RecordedRequest &r) { return setPreference(r, false); }},
    };

    QFile defaults(QStringLiteral(":/brevanti-sim/catalogue.json"));
    if (defaults.open(QIODevice::ReadOnly))
        catalogue = QJsonDocument::fromJson(defaults.readAll()).array();
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

    const Reply reply = serve(recorded, socket);
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
    if (!adminRequest)
        record(request);
    if (const QString problem = framingProblem(request.headers); !problem.isEmpty()) {
        Reply reply = replyOf(error(400, "bad_framing", problem));
        reply.close = true;
        return reply;
    }
    Reply reply;
    if (adminRequest) {
        // Only the machine itself may change how the service behaves.
        const QString refusal = adminRefusal(request, socket->peerAddress(), q->port());
        reply = replyOf(refusal.isEmpty() ? admin.answer(request)
                                          : error(403, "forbidden", refusal));
    } else if (const std::optional<Fault> fault = takeFault(request)) {
        if (fault->status || !fault->body.isNull() || fault->dropConnection) {
            reply.status = fault->status ? fault->status : 200;
            reply.body =
                    fault->body.isNull() ? QByteArrayLiteral(R"({"error":"fault"})") : fault->body;
        } else {
            reply = replyOf(dispatch(request));
        }
        if (!fault->contentType.isNull())
            reply.contentType = fault->contentType;
        reply.headers += fault->headers;
        reply.dropConnection = fault->dropConnection;
        reply.truncateBody = fault->truncateBody;
        reply.stallAfterHalf = fault->stallAfterHalf;
        reply.delayMs = fault->delayMs;
        reply.pace = fault->pace;
    } else {
        reply = replyOf(dispatch(request));
    }
    reply.close = wantsClose(request.headers);
    return reply;
}

void ServicePrivate::record(RecordedRequest request)
{
    request.body = request.body.left(recordedBodyLimit);
    recordedBytes += recordSize(request);
    requests.append(std::move(request));
    trimRequests();
    Q_EMIT q->requestRecorded(int(requests.size() - 1));
}

void ServicePrivate::trimRequests()
{
    // The newest stays even when it alone is over the bound: requestRecorded names it.
    while (requests.size() > requestLimit
           || (requests.size() > 1 && recordedBytes > requestByteLimit))
        recordedBytes -= recordSize(requests.takeFirst());
}

std::optional<Fault> ServicePrivate::takeFault(const RecordedRequest &request)
{
    FaultEntry *match = nullptr;
    for (FaultEntry &entry : faults) {
        if (entry.path != request.path || entry.fault.times == 0)
            continue;
        if (entry.method == request.method)
            match = &entry; // an exact method wins over "*"
        else if (entry.method == "*" && !match)
            match = &entry;
    }
    if (!match)
        return std::nullopt;
    if (match->fault.times > 0)
        --match->fault.times;
    return match->fault;
}

Answer ServicePrivate::dispatch(const RecordedRequest &request)
{
    const Route *route = nullptr;
    for (const Route &candidate : routes) {
        if (candidate.path == request.path
            && (candidate.method == "*" || candidate.method == request.method))
            route = &candidate;
    }
    // Unknown routes are bearer-checked too, so probing without a token learns nothing.
    if ((!route || route->needsBearer) && !bearerValid(request))
        return error(401, "invalid_token",
                     QStringLiteral("The access token is missing, unknown or expired."));
    if (!route)
        return error(404, "not_found", QStringLiteral("There is no such route."));
    // A change that cannot be saved is undone, so that the service holds what its file holds and
    // a retry makes the whole change again. Copies of the state are cheap until a change detaches
    // them, so one is taken only when there is a file to save to.
    std::optional<Stored> before;
    if (!stateFile.isEmpty())
        before = stored();
    saveFailed = false;
    Answer answer = route->handler(request);
    if (!saveFailed)
        return answer;
    stored() = *before;
    return error(503, "state_not_saved",
                 QStringLiteral("The change could not be saved to the state file; it is undone."));
}

bool ServicePrivate::bearerValid(const RecordedRequest &request) const
{
    const auto it = tokens.constFind(credentials(request, "Bearer"));
    return it != tokens.cend() && q->now().toSecsSinceEpoch() < it.value();
}

Answer ServicePrivate::issueToken(const RecordedRequest &request)
{
    const QByteArray basic = QByteArray::fromBase64(credentials(request, "Basic"));
    const qsizetype colon = basic.indexOf(':');
    const QString id = QString::fromUtf8(basic.left(colon));
    if (colon < 0 || !clients.contains(id)
        || clients.value(id) != QString::fromUtf8(basic.mid(colon + 1)))
        return error(401, "invalid_client",
                     QStringLiteral("The client id and secret are not known."));
    if (!isFormEncoded(request))
        return error(400, "invalid_request", QStringLiteral("The body must be form-encoded."));

    const Pairs form = decodeForm(request.body);
    if (formValue(form, QStringLiteral("grant_type")) != QLatin1String("client_credentials"))
        return error(400, "unsupported_grant_type",
                     QStringLiteral("Only client_credentials is granted."));
    if (formValue(form, QStringLiteral("scope")) != QLatin1String(TokenScope))
        return error(400, "invalid_scope", QStringLiteral("The scope must be brevanti-sdk."));

    quint32 words[4];
    QRandomGenerator::system()->fillRange(words);
    const QByteArray token =
            QByteArray(reinterpret_cast<const char *>(words), sizeof words).toHex();
    const qint64 createdAt = q->now().toSecsSinceEpoch();
    dropExpiredTokens();
    tokens.insert(token, createdAt + tokenLifetime);
    saveState();
    return {200,
            QJsonDocument(QJsonObject{{"access_token", QString::fromLatin1(token)},
                                      {"token_type", "bearer"},
                                      {"expires_in", tokenLifetime},
                                      {"created_at", createdAt}})};
}

Answer ServicePrivate::echo(const RecordedRequest &request)
{
    const Pairs form = formOf(request);
    return {200,
            QJsonDocument(QJsonObject{{"method", QString::fromLatin1(request.method)},
                                      {"path", request.path},
                                      {"query", pairsObject(decodeForm(request.query))},
                                      {"form", pairsObject(form)}})};
}

Answer ServicePrivate::registerDevice(const RecordedRequest &request)
{
    const Pairs form = formOf(request);
    const QStringList fields{QStringLiteral("os"), QStringLiteral("os_version"),
                             QStringLiteral("model"), QStringLiteral("manufacturer")};
    QStringList keys;
    for (const QString &field : fields)
        keys.append(QLatin1String("device[") + field + QLatin1Char(']'));
    if (const auto missing = missingField(form, keys))
        return *missing;

    QJsonObject answered{{"uuid", QUuid::createUuid().toString(QUuid::WithoutBraces)}};
    for (qsizetype i = 0; i < fields.size(); ++i)
        answered.insert(fields.at(i), formValue(form, keys.at(i)));
    QJsonObject record = answered;
    record.insert(QLatin1String("user"), QJsonValue::Null);
    record.insert(QLatin1String("push_token"), QJsonValue::Null);
    const QString uuid = answered.value(QLatin1String("uuid")).toString();
    devices.insert(uuid, record);
    deviceOrder.append(uuid);
    saveState();
    return {201, QJsonDocument(QJsonObject{{"device", answered}})};
}

Answer ServicePrivate::setDeviceUser(const RecordedRequest &request, bool assign)
{
    const Pairs form = formOf(request);
    const QString uuidKey = QStringLiteral("device[uuid]");
    const QString userKey = QStringLiteral("user[identifier]");
    if (const auto missing =
                missingField(form, assign ? QStringList{uuidKey, userKey} : QStringList{uuidKey}))
        return *missing;
    const QString uuid = formValue(form, uuidKey);
    const auto it = devices.find(uuid);
    if (it == devices.end())
        return deviceNotFound(uuid);

    const QJsonValue user = assign ? QJsonValue(formValue(form, userKey)) : QJsonValue();
    it->insert(QLatin1String("user"), user);
    if (assign && !users.contains(user.toString()))
        users.append(user.toString());
    saveState();
    return {200,
            QJsonDocument(QJsonObject{{"device", QJsonObject{{"uuid", uuid}, {"user", user}}}})};
}

Answer ServicePrivate::setPushToken(const RecordedRequest &request)
{
    const Pairs form = formOf(request);
    const QString uuidKey = QStringLiteral("device[uuid]");
    const QString tokenKey = QStringLiteral("device[token]");
    if (const auto missing = missingField(form, {uuidKey}))
        return *missing;
    // Only an absent token is missing: a client sends an empty one when the platform has none.
    if (!hasField(form, tokenKey))
        return error(422, "missing_field", tokenKey + QLatin1String(" is missing"));
    const QString uuid = formValue(form, uuidKey);
    const auto it = devices.find(uuid);
    if (it == devices.end())
        return deviceNotFound(uuid);

    const QString token = formValue(form, tokenKey);
    it->insert(QLatin1String("push_token"), token);
    saveState();
    return {200,
            QJsonDocument(
                    QJsonObject{{"device", QJsonObject{{"uuid", uuid}, {"push_token", token}}}})};
}

Answer ServicePrivate::devicePreferences(const RecordedRequest &request)
{
    const Pairs query = decodeForm(request.query);
    const QString uuidKey = QStringLiteral("device[uuid]");
    if (const auto missing = missingField(query, {uuidKey}))
        return *missing;
    const QString uuid = formValue(query, uuidKey);
    if (!devices.contains(uuid))
        return deviceNotFound(uuid);
    return {200, QJsonDocument(preferenceDocument(uuid))};
}

Answer ServicePrivate::setPreference(const RecordedRequest &request, bool enabled)
{
    const Pairs form = formOf(request);
    const QString uuidKey = QStringLiteral("device[uuid]");
    const QString category = formValue(form, QStringLiteral("category"));
    const QString preference = formValue(form, QStringLiteral("preference"));
    const QString uuid = formValue(form, uuidKey);
    const QString user = formValue(form, QStringLiteral("user[identifier]"));
    if (const auto missing =
                missingField(form, {QStringLiteral("category"), QStringLiteral("preference")}))
        return *missing;
    if (!uuid.isEmpty() && !user.isEmpty())
        return error(422, "ambiguous_addressee",
                     QStringLiteral("Give device[uuid] or user[identifier], not both."));
    // Without a user the device is the addressee, so its uuid is what is reported missing.
    if (user.isEmpty()) {
        if (const auto missing = missingField(form, {uuidKey}))
            return *missing;
        if (!devices.contains(uuid))
            return deviceNotFound(uuid);
    } else if (!users.contains(user)) {
        return error(404, "user_not_found",
                     QStringLiteral("No device was ever assigned to the user %1.").arg(user));
    }
    const QJsonObject entry = withKey(catalogue, category);
    if (withKey(entry.value(QLatin1String("preferences")).toArray(), preference).isEmpty())
        return error(404, "preference_not_found",
                     QStringLiteral("The catalogue has no preference %1 in the category %2.")
                             .arg(preference, category));

    const QString addressee = user.isEmpty() ? deviceAddressee(uuid) : userAddressee(user);
    QJsonObject states = preferences.value(addressee).toObject();
    QJsonObject categoryStates = states.value(category).toObject();
    categoryStates.insert(preference, enabled);
    states.insert(category, categoryStates);
    preferences.insert(addressee, states);
    saveState();
    return {200,
            QJsonDocument(QJsonObject{
                    {"category", category}, {"preference", preference}, {"enabled", enabled}})};
}

QJsonArray ServicePrivate::preferenceDocument(const QString &uuid) const
{
    const auto device = devices.constFind(uuid);
    if (device == devices.cend())
        return QJsonArray();
    // An assigned user's states replace the device's own, which come back on unassign.
    const QJsonValue user = device->value(QLatin1String("user"));
    const QJsonObject states =
            preferences
                    .value(user.isString() ? userAddressee(user.toString()) : deviceAddressee(uuid))
                    .toObject();
    QJsonArray document;
    for (const QJsonValue &categoryValue : catalogue) {
        QJsonObject category = categoryValue.toObject();
        const QJsonObject categoryStates =
                states.value(category.value(QLatin1String("key")).toString()).toObject();
        QJsonArray entries;
        for (const QJsonValue &entryValue :
             category.value(QLatin1String("preferences")).toArray()) {
            QJsonObject entry = entryValue.toObject();
            const QJsonValue state =
                    categoryStates.value(entry.value(QLatin1String("key")).toString());
            if (state.isBool())
                entry.insert(QLatin1String("enabled"), state);
            entries.append(entry);
        }
        category.insert(QLatin1String("preferences"), entries);
        document.append(category);
    }
    return document;
}

// Expired tokens are never valid again, so a long run would only pile them up.
void ServicePrivate::dropExpiredTokens()
{
    const qint64 now = q->now().toSecsSinceEpoch();
    tokens.removeIf([now](const auto &token) { return token.value() <= now; });
}

void ServicePrivate::loadState(const QJsonObject &state)
{
    const QJsonObject savedTokens = state.value(QLatin1String("tokens")).toObject();
    for (auto it = savedTokens.begin(); it != savedTokens.end(); ++it)
        tokens.insert(it.key().toLatin1(), it.value().toInteger());

    const QJsonObject savedDevices = state.value(QLatin1String("devices")).toObject();
    for (auto it = savedDevices.begin(); it != savedDevices.end(); ++it)
        devices.insert(it.key(), it.value().toObject());
    // A JSON object keeps no order, so the issue order is saved beside it; devices it does not
    // list (a file edited by hand) follow in key order.
    for (const QJsonValue &uuid : state.value(QLatin1String("device_order")).toArray()) {
        if (devices.contains(uuid.toString()) && !deviceOrder.contains(uuid.toString()))
            deviceOrder.append(uuid.toString());
    }
    for (const QString &uuid : savedDevices.keys()) {
        if (!deviceOrder.contains(uuid))
            deviceOrder.append(uuid);
    }

    for (const QJsonValue &user : state.value(QLatin1String("users")).toArray())
        users.append(user.toString());
    // Files written before users were saved still name them in the device records.
    for (const QJsonObject &device : std::as_const(devices)) {
        const QJsonValue user = device.value(QLatin1String("user"));
        if (user.isString() && !users.contains(user.toString()))
            users.append(user.toString());
    }
    preferences = state.value(QLatin1String("preferences")).toObject();
}

void ServicePrivate::saveState()
{
    if (stateFile.isEmpty())
        return;
    dropExpiredTokens();
    QJsonObject savedTokens;
    for (auto it = tokens.cbegin(); it != tokens.cend(); ++it)
        savedTokens.insert(QString::fromLatin1(it.key()), it.value());
    QJsonObject savedDevices;
    for (auto it = devices.cbegin(); it != devices.cend(); ++it)
        savedDevices.insert(it.key(), it.value());
    const QJsonObject state{{"tokens", savedTokens},
                            {"devices", savedDevices},
                            {"device_order", QJsonArray::fromStringList(deviceOrder)},
                            {"users", QJsonArray::fromStringList(users)},
                            {"preferences", preferences}};
    QString problem;
    saveFailed = !writeStateFile(stateFile, state, &problem);
    if (saveFailed)
        qCWarning(lcSim).noquote() << "cannot write state file" << stateFile
                                   << "(" + problem + "); the change is undone and answered 503";
}

Service::Service(QObject *parent) : QObject(parent), d(std::make_unique<ServicePrivate>(this)) { }

Service::~Service() = default;

bool ServicePrivate::start(std::unique_ptr<QTcpServer> server, const QHostAddress &address,
                           quint16 port)
{
    if (!server->listen(address, port))
        return false;
    tcp = server.release();
    front.bind(tcp);
    return true;
}

bool Service::listen(const QHostAddress &address, quint16 port)
{
    return d->start(
            std::make_unique<PlainServer>([this](QTcpSocket *socket) { d->accept(socket); }),
            address, port);
}

bool Service::listenTls(const QSslCertificate &certificate, const QSslKey &key,
                        const QHostAddress &address, quint16 port)
{
    if (certificate.isNull() || key.isNull())
        return false;
    QSslConfiguration configuration;
    configuration.setLocalCertificate(certificate);
    configuration.setPrivateKey(key);
    return d->start(std::make_unique<TlsServer>([this](QTcpSocket *socket) { d->accept(socket); },
                                                configuration),
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
    d->clients.insert(id, secret);
}

void Service::setTokenLifetime(int seconds)
{
    d->tokenLifetime = seconds;
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
    const std::optional<QJsonObject> state = readStateFile(path, errorMessage);
    if (!state)
        return false;
    d->loadState(*state);
    d->stateFile = path;
    return true;
}

QJsonObject Service::device(const QString &uuid) const
{
    return d->devices.value(uuid);
}

QStringList Service::deviceIds() const
{
    return d->deviceOrder;
}

bool Service::setCatalogue(const QJsonArray &catalogue)
{
    if (!uniqueKeys(catalogue))
        return false;
    for (const QJsonValue &category : catalogue) {
        const QJsonValue entries = category.toObject().value(QLatin1String("preferences"));
        if (!entries.isArray() || !uniqueKeys(entries.toArray()))
            return false;
    }
    d->catalogue = catalogue;
    return true;
}

QJsonArray Service::catalogue() const
{
    return d->catalogue;
}

QJsonArray Service::preferenceDocument(const QString &deviceUuid) const
{
    return d->preferenceDocument(deviceUuid);
}

void Service::setFault(const QByteArray &method, const QString &path, const Fault &fault)
{
    for (FaultEntry &entry : d->faults) {
        if (entry.method == method && entry.path == path) {
            entry.fault = fault;
            return;
        }
    }
    d->faults.append({method, path, fault});
}

void Service::clearFaults()
{
    d->faults.clear();
}

QList<RecordedRequest> Service::requests() const
{
    return d->requests;
}

void Service::clearRequests()
{
    d->requests.clear();
    d->recordedBytes = 0;
}

void Service::setRequestLimit(int count)
{
    d->requestLimit = std::max(count, 1);
    d->trimRequests();
}

void Service::setRecordedBodyLimit(qsizetype bytes)
{
    d->recordedBodyLimit = std::max<qsizetype>(bytes, 0);
}

void Service::setIdleTimeout(std::chrono::milliseconds timeout)
{
    d->idleTimeout = timeout;
}

void Service::setAdminEnabled(bool enabled)
{
    d->adminEnabled = enabled;
}

void Service::setRequestByteLimit(qsizetype bytes)
{
    d->requestByteLimit = std::max<qsizetype>(bytes, 0);
    d->trimRequests();
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
