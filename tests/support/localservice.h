#pragma once

#include "service.h"
#include <Brevanti/Network.h>
#include <Brevanti/ServiceRouter.h>

#include <QString>

#include <memory>

// The local service on a loopback port, with one client registered, and the library's network
// access routed to it. Tests use the library's own base URL; only the network sees the difference.
class LocalService
{
public:
    static inline const QString clientId = QStringLiteral("test-client");
    static inline const QString clientSecret = QStringLiteral("test-secret");

    LocalService();
    ~LocalService() { bvt::setNetworkAccessManager(nullptr); }
    LocalService(const LocalService &) = delete;
    LocalService &operator=(const LocalService &) = delete;

    bvtsim::Service &service() { return m_service; }
    QNetworkAccessManager *network() const { return m_router.get(); } // the library's, routed here

    // The recorded requests for one path, in the order they arrived.
    QList<bvtsim::RecordedRequest> requestsFor(const QString &path) const;

    // Sends the library's requests to this service again, after a test routed them elsewhere.
    void routeLibraryHere() { bvt::setNetworkAccessManager(m_router.get()); }

    // Forget recorded requests, faults and the clock, for the next test function.
    void reset();

    // Exchanges the library's network access finished since the last reset: every request ends in
    // one, answered or not, so tests wait on this rather than on a callback that may never come.
    // After the events already posted have run: whether no exchange is under way. The network
    // access manager is the parent of every reply, so nothing sent can hide from this.
    bool nothingUnderWay() const;
    // The finished exchanges once nothing is under way; -1 when something still is after 5 s.
    int settledExchanges() const;

private:
    bvtsim::Service m_service;
    std::unique_ptr<bvt::ServiceRouter> m_router;
    int m_finished = 0;
};

Q_DECLARE_METATYPE(bvtsim::Fault)
