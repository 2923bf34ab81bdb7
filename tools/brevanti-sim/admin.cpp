#include "admin.h"

#include "faulttable.h"
#include "requestrecord.h"

#include <QHash>

#include <algorithm>

namespace bvtsim {

namespace {

const char Prefix[] = "/_sim/";

Answer done()
{
    return {204, QJsonDocument()};
}

Answer methodNotAllowed(const QByteArray &allowed)
{
    Answer answer = error(405, "method_not_allowed", QStringLiteral("Allowed: ") + allowed);
    answer.headers = {{"Allow", allowed}};
    return answer;
}

// The members of a fault, spelt as the JSON of the admin routes, with their types.
const QHash<QString, QJsonValue::Type> &faultMembers()
{
    static const QHash<QString, QJsonValue::Type> members{
            {"method", QJsonValue::String},         {"path", QJsonValue::String},
            {"delay_ms", QJsonValue::Double},       {"status", QJsonValue::Double},
            {"body", QJsonValue::String},           {"content_type", QJsonValue::String},
            {"drop_connection", QJsonValue::Bool},  {"truncate_body", QJsonValue::Bool},
            {"times", QJsonValue::Double},          {"headers", QJsonValue::Object},
            {"stall_after_half", QJsonValue::Bool}, {"pace", QJsonValue::String}};
    return members;
}

// Whether name can be sent as a header name: an HTTP token, so no separator, space or line end.
bool isHeaderName(const QString &name)
{
    return !name.isEmpty() && std::all_of(name.begin(), name.end(), [](QChar c) {
        return (c.isLetterOrNumber() && c.unicode() < 0x80)
                || QLatin1String("!#$%&'*+-.^_`|~").contains(c);
    });
}

// Whether value can be sent as a header value: Latin-1 without control characters but the tab, so
// that it cannot end its line and start another header or the body.
bool isHeaderValue(const QString &value)
{
    return std::all_of(value.begin(), value.end(), [](QChar c) {
        return c == QLatin1Char('\t')
                || (c.unicode() >= 0x20 && c.unicode() != 0x7f && c.unicode() <= 0xff);
    });
}

// A present string member as bytes, empty but not null when it is "", so that it still counts.
QByteArray bytesOf(const QJsonObject &object, const char *member)
{
    const QJsonValue value = object.value(QLatin1String(member));
    return value.isString() ? QByteArray("").append(value.toString().toUtf8()) : QByteArray();
}

} // namespace

bool AdminRoutes::covers(const QString &path)
{
    return path.startsWith(QLatin1String(Prefix));
}

Answer AdminRoutes::answer(const RecordedRequest &request) const
{
    const QString route = request.path.mid(int(qstrlen(Prefix)));
    if (route == QLatin1String("faults")) {
        if (request.method == "POST")
            return setFault(request.body);
        if (request.method == "GET")
            return {200, QJsonDocument(m_faults.toJson())};
        if (request.method != "DELETE")
            return methodNotAllowed("GET, POST, DELETE");
        m_faults.clear();
        return done();
    }
    if (route == QLatin1String("requests")) {
        if (request.method == "GET")
            return {200, QJsonDocument(m_record.masked())};
        if (request.method != "DELETE")
            return methodNotAllowed("GET, DELETE");
        m_record.clear();
        return done();
    }
    return error(404, "not_found", QStringLiteral("There is no such admin route."));
}

Answer AdminRoutes::setFault(const QByteArray &json) const
{
    const auto invalid = [](const QString &message) {
        return error(400, "invalid_fault", message);
    };
    QJsonParseError parseError;
    const QJsonObject object = QJsonDocument::fromJson(json, &parseError).object();
    if (parseError.error != QJsonParseError::NoError)
        return invalid(QStringLiteral("The body is not JSON: ") + parseError.errorString());
    for (auto it = object.begin(); it != object.end(); ++it) {
        if (faultMembers().value(it.key(), QJsonValue::Undefined) != it.value().type())
            return invalid(QStringLiteral("%1 is not a member of a fault, or not of its type.")
                                   .arg(it.key()));
    }
    const QString path = object.value(QLatin1String("path")).toString();
    if (!path.startsWith(QLatin1Char('/')))
        return invalid(QStringLiteral("path must be given and begin with /."));

    Fault fault;
    fault.delayMs = object.value(QLatin1String("delay_ms")).toInt();
    fault.answerStatus = object.value(QLatin1String("status")).toInt();
    fault.body = bytesOf(object, "body");
    fault.contentType = bytesOf(object, "content_type");
    fault.dropConnection = object.value(QLatin1String("drop_connection")).toBool();
    fault.truncateBody = object.value(QLatin1String("truncate_body")).toBool();
    fault.stallAfterHalf = object.value(QLatin1String("stall_after_half")).toBool();
    fault.remaining = object.value(QLatin1String("times")).toInt(-1);
    const QString pace = object.value(QLatin1String("pace")).toString(QStringLiteral("whole"));
    const QStringList &paces = paceNames();
    if (!paces.contains(pace))
        return invalid(QStringLiteral("pace is one of %1.").arg(paces.join(QStringLiteral(", "))));
    fault.pace = Pace(paces.indexOf(pace));
    if (!isHeaderValue(object.value(QLatin1String("content_type")).toString()))
        return invalid(QStringLiteral("content_type holds a line end, a control character or a "
                                      "character beyond Latin-1."));
    const QJsonObject headers = object.value(QLatin1String("headers")).toObject();
    for (auto it = headers.begin(); it != headers.end(); ++it) {
        if (!it.value().isString())
            return invalid(QStringLiteral("The header %1 is not a string.").arg(it.key()));
        if (!isHeaderName(it.key()) || !isHeaderValue(it.value().toString()))
            return invalid(QStringLiteral("The header %1 is not a token with a value of Latin-1 "
                                          "text without line ends or control characters.")
                                   .arg(it.key()));
        fault.headers.append({it.key().toLatin1(), it.value().toString().toLatin1()});
    }
    m_faults.set(object.value(QLatin1String("method")).toString(QStringLiteral("*")).toLatin1(),
                 path, fault);
    return done();
}

} // namespace bvtsim
