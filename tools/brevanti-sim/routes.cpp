#include "routes.h"

#include "request.h"
#include "state.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <optional>

namespace bvtsim {

namespace {

const char TokenScope[] = "brevanti-sdk";

Answer deviceNotFound(const QString &uuid)
{
    return error(404, "device_not_found", QStringLiteral("No device has the uuid %1.").arg(uuid));
}

// The 422 for the first of keys that is absent or empty, or nothing when all are given.
std::optional<Answer> missingField(const Form &form, const QStringList &keys)
{
    for (const QString &key : keys) {
        if (form.value(key).isEmpty())
            return error(422, "missing_field", key + QLatin1String(" is missing"));
    }
    return std::nullopt;
}

QByteArray credentials(const Request &request, const QByteArray &scheme)
{
    const QByteArray authorization = request.header("Authorization");
    const qsizetype space = authorization.indexOf(' ');
    if (space < 0 || authorization.left(space).compare(scheme, Qt::CaseInsensitive) != 0)
        return QByteArray();
    return authorization.mid(space + 1).trimmed();
}

} // namespace

struct Routes::Route
{
    QByteArray method; // "*" matches every method
    QString path;
    bool needsBearer;
    Answer (*handler)(Routes &, const Request &);
};

Routes::Routes(ServiceState &state, std::function<QDateTime()> now)
    : m_state(state), m_now(std::move(now))
{ }

void Routes::addClient(const QString &id, const QString &secret)
{
    m_clients.insert(id, secret);
}

const QList<Routes::Route> &Routes::table()
{
    // Every route but the token one is bearer-checked.
    static const QList<Route> routes{
            {"POST", QStringLiteral("/oauth/token"), false,
             [](Routes &r, const Request &q) { return r.issueToken(q); }},
            {"*", QStringLiteral("/echo"), true,
             [](Routes &r, const Request &q) { return r.echo(q); }},
            {"POST", QStringLiteral("/devices"), true,
             [](Routes &r, const Request &q) { return r.registerDevice(q); }},
            {"PATCH", QStringLiteral("/devices/assign"), true,
             [](Routes &r, const Request &q) { return r.setDeviceUser(q, true); }},
            {"PATCH", QStringLiteral("/devices/unassign"), true,
             [](Routes &r, const Request &q) { return r.setDeviceUser(q, false); }},
            {"PATCH", QStringLiteral("/devices/enable"), true,
             [](Routes &r, const Request &q) { return r.setPushToken(q); }},
            {"GET", QStringLiteral("/preferences"), true,
             [](Routes &r, const Request &q) { return r.devicePreferences(q); }},
            {"PATCH", QStringLiteral("/preferences/enable"), true,
             [](Routes &r, const Request &q) { return r.setPreference(q, true); }},
            {"PATCH", QStringLiteral("/preferences/disable"), true,
             [](Routes &r, const Request &q) { return r.setPreference(q, false); }},
    };
    return routes;
}

Answer Routes::answer(const Request &request)
{
    const Route *route = nullptr;
    for (const Route &candidate : table()) {
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
    return route->handler(*this, request);
}

bool Routes::bearerValid(const Request &request) const
{
    return m_state.tokenValid(credentials(request, "Bearer"), m_now());
}

Answer Routes::issueToken(const Request &request)
{
    const QByteArray basic = QByteArray::fromBase64(credentials(request, "Basic"));
    const qsizetype colon = basic.indexOf(':');
    const QString id = QString::fromUtf8(basic.left(colon));
    if (colon < 0 || !m_clients.contains(id)
        || m_clients.value(id) != QString::fromUtf8(basic.mid(colon + 1)))
        return error(401, "invalid_client",
                     QStringLiteral("The client id and secret are not known."));
    if (!request.formEncoded)
        return error(400, "invalid_request", QStringLiteral("The body must be form-encoded."));
    if (request.form.value(QStringLiteral("grant_type")) != QLatin1String("client_credentials"))
        return error(400, "unsupported_grant_type",
                     QStringLiteral("Only client_credentials is granted."));
    if (request.form.value(QStringLiteral("scope")) != QLatin1String(TokenScope))
        return error(400, "invalid_scope", QStringLiteral("The scope must be brevanti-sdk."));

    const QDateTime now = m_now();
    const QByteArray token = m_state.issueToken(now, m_tokenLifetime);
    return {200,
            QJsonDocument(QJsonObject{{"access_token", QString::fromLatin1(token)},
                                      {"token_type", "bearer"},
                                      {"expires_in", m_tokenLifetime},
                                      {"created_at", now.toSecsSinceEpoch()}})};
}

Answer Routes::echo(const Request &request) const
{
    return {200,
            QJsonDocument(QJsonObject{{"method", QString::fromLatin1(request.method)},
                                      {"path", request.path},
                                      {"query", request.query.toJson()},
                                      {"form", request.form.toJson()}})};
}

Answer Routes::registerDevice(const Request &request)
{
    const QStringList fields{QStringLiteral("os"), QStringLiteral("os_version"),
                             QStringLiteral("model"), QStringLiteral("manufacturer")};
    QStringList keys;
    for (const QString &field : fields)
        keys.append(QLatin1String("device[") + field + QLatin1Char(']'));
    if (const auto missing = missingField(request.form, keys))
        return *missing;

    QJsonObject description;
    for (qsizetype i = 0; i < fields.size(); ++i)
        description.insert(fields.at(i), request.form.value(keys.at(i)));
    QJsonObject answered = description;
    answered.insert(QLatin1String("uuid"), m_state.registerDevice(description, m_now()));
    return {201, QJsonDocument(QJsonObject{{"device", answered}})};
}

Answer Routes::setDeviceUser(const Request &request, bool assign)
{
    const QString uuidKey = QStringLiteral("device[uuid]");
    const QString userKey = QStringLiteral("user[identifier]");
    if (const auto missing = missingField(
                request.form, assign ? QStringList{uuidKey, userKey} : QStringList{uuidKey}))
        return *missing;
    const QString uuid = request.form.value(uuidKey);
    const QString user = request.form.value(userKey);
    if (!(assign ? m_state.assign(uuid, user) : m_state.unassign(uuid)))
        return deviceNotFound(uuid);
    const QJsonValue assigned = assign ? QJsonValue(user) : QJsonValue();
    return {200,
            QJsonDocument(
                    QJsonObject{{"device", QJsonObject{{"uuid", uuid}, {"user", assigned}}}})};
}

Answer Routes::setPushToken(const Request &request)
{
    const QString uuidKey = QStringLiteral("device[uuid]");
    const QString tokenKey = QStringLiteral("device[token]");
    if (const auto missing = missingField(request.form, {uuidKey}))
        return *missing;
    // Only an absent token is missing: a client sends an empty one when the platform has none.
    if (!request.form.has(tokenKey))
        return error(422, "missing_field", tokenKey + QLatin1String(" is missing"));
    const QString uuid = request.form.value(uuidKey);
    const QString token = request.form.value(tokenKey);
    if (!m_state.setPushToken(uuid, token))
        return deviceNotFound(uuid);
    return {200,
            QJsonDocument(
                    QJsonObject{{"device", QJsonObject{{"uuid", uuid}, {"push_token", token}}}})};
}

Answer Routes::devicePreferences(const Request &request) const
{
    const QString uuidKey = QStringLiteral("device[uuid]");
    if (const auto missing = missingField(request.query, {uuidKey}))
        return *missing;
    const QString uuid = request.query.value(uuidKey);
    if (!m_state.hasDevice(uuid))
        return deviceNotFound(uuid);
    return {200, QJsonDocument(m_state.preferenceDocument(uuid))};
}

Answer Routes::setPreference(const Request &request, bool enabled)
{
    const Form &form = request.form;
    const QString uuidKey = QStringLiteral("device[uuid]");
    const QString category = form.value(QStringLiteral("category"));
    const QString preference = form.value(QStringLiteral("preference"));
    const QString uuid = form.value(uuidKey);
    const QString user = form.value(QStringLiteral("user[identifier]"));
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
        if (!m_state.hasDevice(uuid))
            return deviceNotFound(uuid);
    } else if (!m_state.hasUser(user)) {
        return error(404, "user_not_found",
                     QStringLiteral("No device was ever assigned to the user %1.").arg(user));
    }
    if (!m_state.hasPreference(category, preference))
        return error(404, "preference_not_found",
                     QStringLiteral("The catalogue has no preference %1 in the category %2.")
                             .arg(preference, category));

    m_state.setPreference(user.isEmpty() ? Holder::Device : Holder::User,
                          user.isEmpty() ? uuid : user, category, preference, enabled);
    return {200,
            QJsonDocument(QJsonObject{
                    {"category", category}, {"preference", preference}, {"enabled", enabled}})};
}

} // namespace bvtsim
