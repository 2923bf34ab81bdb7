#include "adminguard.h"

#include "recordedrequest.h"

#include <QHostAddress>

#include <algorithm>

namespace bvtsim {

namespace {

bool isOneOf(const QByteArray &value, const QByteArrayList &allowed)
{
    return std::any_of(allowed.cbegin(), allowed.cend(), [&value](const QByteArray &candidate) {
        return value.compare(candidate, Qt::CaseInsensitive) == 0;
    });
}

// Whether the request has at least one header called name, and every one is allowed.
bool onlyAllowed(const RecordedRequest &request, const QByteArray &name,
                 const QByteArrayList &allowed)
{
    bool seen = false;
    for (const auto &[headerName, value] : request.headers) {
        if (headerName.compare(name, Qt::CaseInsensitive) != 0)
            continue;
        if (!isOneOf(value.trimmed(), allowed))
            return false;
        seen = true;
    }
    return seen;
}

} // namespace

QString adminRefusal(const RecordedRequest &request, const QHostAddress &peer, quint16 port)
{
    if (!peer.isLoopback())
        return QStringLiteral("The admin routes answer loopback only.");
    const QByteArray withPort = ':' + QByteArray::number(port);
    QByteArrayList hosts;
    QByteArrayList origins;
    for (const QByteArray name : {"127.0.0.1", "localhost", "[::1]"}) {
        hosts << name << name + withPort;
        origins << "http://" + name + withPort << "https://" + name + withPort;
        // An origin leaves out the port its scheme implies.
        if (port == 80)
            origins << "http://" + name;
        if (port == 443)
            origins << "https://" + name;
    }
    if (!onlyAllowed(request, "Host", hosts))
        return QStringLiteral("The admin routes answer a Host of 127.0.0.1, localhost or [::1], "
                              "with this service's port or none.");
    if (!request.header("Origin").isNull() && !onlyAllowed(request, "Origin", origins))
        return QStringLiteral("The admin routes answer no web page of another origin.");
    return QString();
}

} // namespace bvtsim
