#include <Brevanti/ServiceRouter.h>

#include "origin.h"

#include <QNetworkRequest>

namespace bvt {

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

ServiceRouter::ServiceRouter(const QUrl &destination, QObject *parent)
    : QNetworkAccessManager(parent), m_service(serviceOrigin()), m_destination(destination)
{ }

QUrl ServiceRouter::destination() const
{
    return m_destination;
}

QNetworkReply *ServiceRouter::createRequest(Operation op, const QNetworkRequest &request,
                                            QIODevice *outgoingData)
{
    if (!sameOrigin(request.url(), m_service))
        return QNetworkAccessManager::createRequest(op, request, outgoingData);

    QUrl target = request.url();
    target.setScheme(m_destination.scheme());
    target.setHost(m_destination.host());
    target.setPort(m_destination.port());
    QNetworkRequest routed(request);
    routed.setUrl(target);
    return QNetworkAccessManager::createRequest(op, routed, outgoingData);
}

} // namespace bvt
