#include "inspector.h"

#include "idlewatch.h"
#include "recordedrequest.h"
#include "state.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QSet>
#include <QTcpSocket>

namespace bvtsim {

namespace {

const char Prefix[] = "/_sim/";

// The page runs only its own script and style, and no other site may frame it.
const QList<QPair<QByteArray, QByteArray>> pageHeaders{
        {"Content-Security-Policy",
         "default-src 'self'; object-src 'none'; base-uri 'none'; frame-ancestors 'none'; "
         "form-action 'none'"},
        {"X-Content-Type-Options", "nosniff"},
        {"Cache-Control", "no-store"}};

QString route(const QString &path)
{
    return path.startsWith(QLatin1String(Prefix)) ? path.mid(int(qstrlen(Prefix))) : QString();
}

// A token shown by its first characters alone: enough to tell tokens apart, not to use one.
QString maskedToken(const QByteArray &token)
{
    return QString::fromLatin1(token.left(6)) + QStringLiteral("…");
}

QString isoTime(const QDateTime &time)
{
    return time.isValid() ? time.toUTC().toString(Qt::ISODate) : QString();
}

} // namespace

Inspector::~Inspector()
{
    for (const QPointer<QTcpSocket> &socket : std::as_const(m_streams)) {
        if (socket)
            socket->disconnectFromHost();
    }
}

std::optional<Reply> Inspector::file(const QString &path)
{
    static const QHash<QString, QByteArray> types{
            {"inspector", "text/html; charset=utf-8"},
            {"inspector.js", "text/javascript; charset=utf-8"},
            {"inspector.css", "text/css; charset=utf-8"}};
    const QString name = route(path);
    if (!types.contains(name))
        return std::nullopt;
    QFile resource(name == QLatin1String("inspector")
                           ? QStringLiteral(":/brevanti-sim/inspector/index.html")
                           : QStringLiteral(":/brevanti-sim/inspector/") + name);
    if (!resource.open(QIODevice::ReadOnly))
        return std::nullopt;
    Reply reply;
    reply.contentType = types.value(name);
    reply.headers = pageHeaders;
    reply.body = resource.readAll();
    return reply;
}

bool Inspector::covers(const QString &path)
{
    // The page's own files are file()'s.
    static const QSet<QString> routes{"state", "preferences", "events"};
    return routes.contains(route(path));
}

bool Inspector::isEventStream(const RecordedRequest &request)
{
    return request.method == "GET" && route(request.path) == QLatin1String("events");
}

Answer Inspector::answer(const RecordedRequest &request)
{
    const QString name = route(request.path);
    if (name == QLatin1String("state") && request.method == "GET")
        return {200, QJsonDocument(stateJson())};
    if (name == QLatin1String("preferences") && request.method == "POST")
        return switchPreference(request.body);
    const QByteArray allowed = name == QLatin1String("preferences") ? "POST" : "GET";
    Answer refused = error(405, "method_not_allowed",
                           QStringLiteral("Allowed: ") + QString::fromLatin1(allowed));
    refused.headers = {{"Allow", allowed}};
    return refused;
}

QJsonObject Inspector::stateJson() const
{
    QJsonArray devices;
    QJsonArray preferences;
    for (const Device &device : m_state.devices()) {
        devices.append(QJsonObject{
                {"uuid", device.uuid},
                {"user", device.user ? QJsonValue(*device.user) : QJsonValue()},
                {"push_token", device.pushToken ? QJsonValue(*device.pushToken) : QJsonValue()},
                {"description", device.description},
                {"registered", isoTime(device.registered)}});
        preferences.append(
                QJsonObject{{"owner", "device"},
                            {"id", device.uuid},
                            {"document", m_state.preferences(Holder::Device, device.uuid)}});
    }
    // Every user a device was ever assigned to keeps its preferences, assigned now or not.
    for (const QString &user : m_state.users())
        preferences.append(QJsonObject{{"owner", "user"},
                                       {"id", user},
                                       {"document", m_state.preferences(Holder::User, user)}});
    QJsonArray tokens;
    for (const IssuedToken &token : m_state.tokens())
        tokens.append(QJsonObject{{"token", maskedToken(token.token)},
                                  {"expires", isoTime(token.expiry)}});
    return {{"devices", devices}, {"tokens", tokens}, {"preferences", preferences}};
}

Answer Inspector::switchPreference(const QByteArray &json)
{
    const QJsonObject object = QJsonDocument::fromJson(json).object();
    const QString owner = object.value(QLatin1String("owner")).toString();
    const QJsonValue enabled = object.value(QLatin1String("enabled"));
    if ((owner != QLatin1String("device") && owner != QLatin1String("user")) || !enabled.isBool())
        return error(400, "invalid_switch",
                     QStringLiteral("A switch is {\"owner\": \"device\" or \"user\", \"id\", "
                                    "\"category\", \"preference\", \"enabled\": true or false}."));
    const bool switched = m_state.setPreference(
            owner == QLatin1String("device") ? Holder::Device : Holder::User,
            object.value(QLatin1String("id")).toString(),
            object.value(QLatin1String("category")).toString(),
            object.value(QLatin1String("preference")).toString(), enabled.toBool());
    if (!switched)
        return error(404, "not_found", QStringLiteral("No such holder or preference."));
    return {204, QJsonDocument()};
}

void Inspector::stream(QTcpSocket *socket)
{
    // Open for as long as the page is: the idle watch must not close it.
    IdleWatch::hold(socket);
    socket->write("HTTP/1.1 200 OK\r\nContent-Type: text/event-stream\r\nCache-Control: "
                  "no-store\r\nX-Content-Type-Options: nosniff\r\n\r\n: inspector\n\n");
    m_streams.removeAll(nullptr);
    m_streams.append(socket);
}

void Inspector::tellRequest(const QJsonObject &request)
{
    tell("request", QJsonDocument(request).toJson(QJsonDocument::Compact));
}

void Inspector::tellStateChanged()
{
    tell("state", "{}");
}

void Inspector::tell(const QByteArray &event, const QByteArray &data)
{
    // Compact JSON holds no line end, so one data line carries it whole.
    const QByteArray message = "event: " + event + "\ndata: " + data + "\n\n";
    for (const QPointer<QTcpSocket> &socket : std::as_const(m_streams)) {
        if (socket && socket->state() == QAbstractSocket::ConnectedState)
            socket->write(message);
    }
}

} // namespace bvtsim
