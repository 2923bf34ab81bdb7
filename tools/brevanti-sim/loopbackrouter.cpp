#include "loopbackrouter.h"

#include <QNetworkRequest>

namespace bvtsim {

namespace {

int effectivePort(const QUrl &url)
{
    return url.port(url.scheme() == QLatin1String("https") ? 443 : 80);
}

bool sameOrigin(const QUrl &a, const QUrl &b)
{
    return a.scheme() == b.scheme() && a.host() == b.host() && effectivePort(a) == effectivePort(b);
}

} // namespace

LoopbackRouter::LoopbackRouter(const QUrl &from, const QUrl &to, QObject *parent)
    : QNetworkAccessManager(parent), m_from(from), m_to(to)
{ }

QNetworkReply *LoopbackRouter::createRequest(Operation op, const QNetworkRequest &request,
                                             QIODevice *outgoingData)
{
    if (!sameOrigin(request.url(), m_from))
        return QNetworkAccessManager::createRequest(op, request, outgoingData);

    // Only the origin changes: the encoded path and query go out exactly as the client built them.
    QUrl target = request.url();
    target.setScheme(m_to.scheme());
    target.setHost(m_to.host());
    target.setPort(m_to.port());
    QNetworkRequest routed(request);
    routed.setUrl(target);
    return QNetworkAccessManager::createRequest(op, routed, outgoingData);
}

} // namespace bvtsim
