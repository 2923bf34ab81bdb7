#include "localservice.h"

#include "client/origin.h"

#include <Brevanti/BVT.h>

#include <QtNetwork>
#include <QtTest>

#include <algorithm>

LocalService::LocalService()
{
    m_service.addClient(clientId, clientSecret);
    if (!m_service.listen())
        qFatal("the local service cannot listen on loopback");
    m_router = std::make_unique<bvt::ServiceRouter>(m_service.baseUrl());
    QObject::connect(m_router.get(), &QNetworkAccessManager::finished, [this] { ++m_finished; });
    routeLibraryHere();
}

QList<bvtsim::RecordedRequest> LocalService::requestsFor(const QString &path) const
{
    QList<bvtsim::RecordedRequest> matching = m_service.requests();
    matching.removeIf(
            [&path](const bvtsim::RecordedRequest &request) { return request.path != path; });
    return matching;
}

void LocalService::reset()
{
    m_service.clearFaults();
    m_service.clearClock();
    m_service.clearRequests();
    m_finished = 0;
}

bool LocalService::nothingUnderWay() const
{
    QCoreApplication::sendPostedEvents();
    QCoreApplication::processEvents();
    const auto replies = m_router->findChildren<QNetworkReply *>();
    return std::all_of(replies.cbegin(), replies.cend(),
                       [](const QNetworkReply *reply) { return reply->isFinished(); });
}

int LocalService::settledExchanges() const
{
    return QTest::qWaitFor([this] { return nothingUnderWay(); }) ? m_finished : -1;
}
