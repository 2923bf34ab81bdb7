#include <Brevanti/ServiceRouter.h>

#include "origin.h"

#include <QNetworkRequest>

namespace bvt {

class ServiceRouter::Private
{
public:
    explicit Private(const QUrl &destination) : service(serviceOrigin()), destination(destination)
    { }

    const QUrl service;
    const QUrl destination;
};

ServiceRouter::ServiceRouter(const QUrl &destination, QObject *parent)
    : QNetworkAccessManager(parent), d(std::make_unique<Private>(destination))
{ }

ServiceRouter::~ServiceRouter() = default;

QUrl ServiceRouter::destination() const
{
    return d->destination;
}

QNetworkReply *ServiceRouter::createRequest(Operation op, const QNetworkRequest &request,
                                            QIODevice *outgoingData)
{
    if (!sameOrigin(request.url(), d->service))
        return QNetworkAccessManager::createRequest(op, request, outgoingData);

    QUrl target = request.url();
    target.setScheme(d->destination.scheme());
    target.setHost(d->destination.host());
    target.setPort(d->destination.port());
    QNetworkRequest routed(request);
    routed.setUrl(target);
    return QNetworkAccessManager::createRequest(op, routed, outgoingData);
}

} // namespace bvt
