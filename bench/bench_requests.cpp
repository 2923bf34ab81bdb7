// Measures what the library adds to a request and how it uses connections, against the local
// service running in a thread of its own:
// - 500 sequential authenticated GETs through the library against the same requests (same
//   headers, same 60 s transfer time-out, same JSON decoding) through a bare
//   QNetworkAccessManager, as a ratio;
// - the TCP connections the service saw for 200 requests, sequential and 50 at a time.
#include "client/origin.h"
#include "loopbackrouter.h"
#include "service.h"

#include <Brevanti/BVT.h>
#include <Brevanti/BVTManager.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QJsonDocument>
#include <QNetworkReply>
#include <QSettings>
#include <QStandardPaths>
#include <QThread>
#include <QTimer>

#include <algorithm>
#include <cstdio>
#include <future>
#include <vector>

namespace {

const QString clientId = QStringLiteral("bench-client");
const QString clientSecret = QStringLiteral("bench-secret");

// The service with its own event loop, so that serving does not share the client's thread.
class ServiceThread
{
public:
    ServiceThread()
    {
        std::promise<bvtsim::Service *> ready;
        auto started = ready.get_future();
        m_thread.reset(QThread::create([&ready] {
            bvtsim::Service service;
            service.addClient(clientId, clientSecret);
            service.listen();
            ready.set_value(&service);
            QEventLoop loop; // QThread::quit() ends it
            loop.exec();
        }));
        m_thread->start();
        m_service = started.get();
    }
    ~ServiceThread()
    {
        m_thread->quit();
        m_thread->wait();
    }
    QUrl baseUrl() const
    {
        QUrl url;
        QMetaObject::invokeMethod(
                m_service, [&] { url = m_service->baseUrl(); }, Qt::BlockingQueuedConnection);
        return url;
    }
    int requestCount() const
    {
        int count = 0;
        QMetaObject::invokeMethod(
                m_service, [&] { count = int(m_service->requests().size()); },
                Qt::BlockingQueuedConnection);
        return count;
    }
    int connectionCount() const
    {
        int count = 0;
        QMetaObject::invokeMethod(
                m_service, [&] { count = m_service->connectionCount(); },
                Qt::BlockingQueuedConnection);
        return count;
    }

private:
    std::unique_ptr<QThread> m_thread;
    bvtsim::Service *m_service = nullptr;
};

void quiet(QtMsgType, const QMessageLogContext &, const QString &) { }

// Runs count GETs through the library, each after the previous one has answered.
qint64 libraryGets(const std::shared_ptr<BVTManager> &manager, int count)
{
    QEventLoop loop;
    int left = count;
    std::function<void()> next = [&] {
        if (left-- == 0) {
            loop.quit();
            return;
        }
        manager->getUrl(
                "/echo", {{"a", "1"}}, [&](const QVariant &) { next(); },
                [&](const QString &) { next(); });
    };
    QElapsedTimer timer;
    timer.start();
    next();
    loop.exec();
    return timer.nsecsElapsed();
}

// The same GETs made directly, with the headers the library sends and the same JSON decoding.
qint64 bareGets(QNetworkAccessManager &network, const QString &token, int count)
{
    QEventLoop loop;
    int left = count;
    std::function<void()> next = [&] {
        if (left-- == 0) {
            loop.quit();
            return;
        }
        QNetworkRequest request(QUrl(bvt::serviceOrigin() + "/echo?a=1"));
        request.setRawHeader("Authorization", "Bearer " + token.toUtf8());
        request.setRawHeader("Accept", bvt::vendorMediaType);
        request.setRawHeader("Content-Type", "application/json;");
        request.setTransferTimeout(60000);
        QNetworkReply *reply = network.get(request);
        QObject::connect(reply, &QNetworkReply::finished, reply, [&, reply] {
            reply->deleteLater();
            QJsonDocument::fromJson(reply->readAll()).toVariant();
            next();
        });
    };
    QElapsedTimer timer;
    timer.start();
    next();
    loop.exec();
    return timer.nsecsElapsed();
}

// Sends total GETs keeping at most inFlight under way; returns the connections the service saw.
int connectionsFor(ServiceThread &service, int total, int inFlight)
{
    bvtsim::LoopbackRouter network(QUrl(bvt::serviceOrigin()), service.baseUrl());
    bvt::setNetworkAccessManager(&network);
    auto manager = BVTManager::initWithLaunchOptions({}, clientId, clientSecret);
    const int before = service.connectionCount();

    QEventLoop loop;
    int started = 0;
    int finished = 0;
    std::function<void()> startMore = [&] {
        while (started < total && started - finished < inFlight) {
            ++started;
            auto done = [&] {
                if (++finished == total)
                    loop.quit();
                else
                    startMore();
            };
            manager->getUrl(
                    "/echo", {}, [done](const QVariant &) { done(); },
                    [done](const QString &) { done(); });
        }
    };
    // One request first, so that the others find a token and do not each fetch their own.
    manager->verifyAuthenticated([&](const QVariant &) { startMore(); },
                                 [&](const BVTError &) { loop.quit(); });
    loop.exec();
    bvt::setNetworkAccessManager(nullptr);
    return service.connectionCount() - before;
}

// A first run: the time BVT::initWithLaunchOptions takes to return, and the round trips until the
// device identifier is stored.
struct FirstRun
{
    double initMs = 0;
    int roundTrips = 0;
};

FirstRun firstRun(ServiceThread &service)
{
    QSettings().remove(QStringLiteral("com.brevanti.ios.BVTDeviceId"));
    bvtsim::LoopbackRouter network(QUrl(bvt::serviceOrigin()), service.baseUrl());
    bvt::setNetworkAccessManager(&network);
    const int before = service.requestCount();
    QElapsedTimer timer;
    timer.start();
    BVT::initWithLaunchOptions({}, clientId, clientSecret);
    FirstRun run;
    run.initMs = timer.nsecsElapsed() / 1e6;
    QEventLoop loop;
    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, &loop, [&loop] {
        if (!BVT::currentDevice().isNull())
            loop.quit();
    });
    poll.start(1);
    QTimer::singleShot(10000, &loop, &QEventLoop::quit);
    loop.exec();
    run.roundTrips = service.requestCount() - before;
    bvt::setNetworkAccessManager(nullptr);
    return run;
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    // Each manager registers the device on its first run; keep that out of the user's settings.
    QCoreApplication::setOrganizationName(QStringLiteral("BrevantiBench"));
    QStandardPaths::setTestModeEnabled(true);
    ServiceThread service;
    qInstallMessageHandler(quiet); // the library's log lines would time the terminal

    bvtsim::LoopbackRouter network(QUrl(bvt::serviceOrigin()), service.baseUrl());
    bvt::setNetworkAccessManager(&network);
    auto manager = BVTManager::initWithLaunchOptions({}, clientId, clientSecret);
    libraryGets(manager, 50); // warm up: token, connection, caches
    bareGets(network, manager->access_token(), 50);

    // Interleaved rounds, so that drift in the machine's load touches both sides alike; the median
    // of the rounds' ratios keeps a burst of other work on the machine out of the figure.
    const int rounds = 10;
    const int perRound = 50;
    qint64 library = 0;
    qint64 bare = 0;
    std::vector<double> ratios;
    for (int round = 0; round < rounds; ++round) {
        const qint64 libraryRound = libraryGets(manager, perRound);
        const qint64 bareRound = bareGets(network, manager->access_token(), perRound);
        library += libraryRound;
        bare += bareRound;
        ratios.push_back(double(libraryRound) / double(bareRound));
    }
    bvt::setNetworkAccessManager(nullptr);
    std::sort(ratios.begin(), ratios.end());
    const double ratio = (ratios[rounds / 2 - 1] + ratios[rounds / 2]) / 2;

    const int sequential = connectionsFor(service, 200, 1);
    const int parallel = connectionsFor(service, 200, 50);
    const FirstRun first = firstRun(service);

    std::printf("%-58s %12s %12s\n", "measure", "value", "target");
    std::printf("%-58s %12.3f %12s\n", "library/bare time, 500 sequential GETs (median of rounds)",
                ratio, "<= 1.05");
    std::printf("%-58s %12.1f %12s\n", "  library, microseconds per GET",
                library / 1000.0 / (rounds * perRound), "");
    std::printf("%-58s %12.1f %12s\n", "  bare QNetworkAccessManager, microseconds per GET",
                bare / 1000.0 / (rounds * perRound), "");
    std::printf("%-58s %12d %12s\n", "TCP connections, 200 GETs one at a time", sequential, "<= 6");
    std::printf("%-58s %12d %12s\n", "TCP connections, 200 GETs 50 at a time", parallel, "<= 6");
    std::printf("%-58s %12d %12s\n", "round trips of a first-run registration", first.roundTrips,
                "2");
    std::printf("%-58s %12.3f %12s\n", "BVT::initWithLaunchOptions returns after (ms)",
                first.initMs, "< 1");
    return 0;
}
