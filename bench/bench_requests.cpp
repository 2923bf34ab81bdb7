// Measures what the library adds to a request and how it uses connections:
// - sequential authenticated GETs through the library against the same GETs made by hand through
//   a bare QNetworkAccessManager, as two ratios per request (wall time, and the CPU time of the
//   calling thread), once against the local service and once against a minimal raw server, where
//   the serving takes almost nothing and the ratio is the client's alone;
// - the TCP connections the service saw for 200 requests, sequential and 50 at a time;
// - a first run: its round trips and how long initialisation takes to return.
// "bench_requests profile library|bare|client [COUNT]" makes only COUNT GETs (20000 by default) of
// one side against the raw server, for a profiler: perf record -g bench_requests profile library.
// The library's log lines go where Qt sends them by default (standard error): run it with standard
// error sent to a file, as scripts/bench does, so that a terminal's drawing is not in the figures.
#include "client/httpclient.h"
#include "client/origin.h"
#include "rawserver.h"
#include "service.h"
#include <Brevanti/ServiceRouter.h>

#include <Brevanti/BVT.h>
#include <Brevanti/BVTManager.h>
#include <Brevanti/Client.h>

#include <QCoreApplication>
#include <QDateTime>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QJsonDocument>
#include <QLoggingCategory>
#include <QNetworkReply>
#include <QSettings>
#include <QStandardPaths>
#include <QThread>
#include <QTimer>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <ctime>
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

// Per request, in nanoseconds: wall time, and CPU time of the thread that makes the requests (the
// servers and Qt's own network thread are not in it). On a virtual machine whose host does not
// report stolen time, the thread's CPU clock also runs while the host has taken the virtual CPU
// away: when the host is busy, every side's CPU time rises by a similar amount (the bare side's
// microseconds show it) and the CPU ratio moves towards 1.
struct Cost
{
    double wall = 0;
    double cpu = 0;
};

qint64 threadCpuNs()
{
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return qint64(now.tv_sec) * 1000000000 + now.tv_nsec;
}

// Called with whether the request succeeded, from the event loop.
using Done = std::function<void(bool ok)>;
using Send = std::function<void(const Done &done)>;

// The median of the rounds' figures and, from the order statistics, the range that holds the median
// of all such rounds 95 times in 100 if the rounds are independent of each other.
struct Median
{
    double value = 0;
    double low = 0;
    double high = 0;
};

Median median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    const size_t n = values.size();
    const size_t middle = n / 2;
    const auto spread = size_t(0.98 * std::sqrt(double(n))); // 1.96 standard deviations
    return {n % 2 ? values[middle] : (values[middle - 1] + values[middle]) / 2,
            values[middle > spread ? middle - spread : 0],
            values[std::min(n - 1, middle + spread)]};
}

// What a reading of the thread's CPU clock costs the thread (a system call on some machines). Each
// timed block pays for one; it is taken off so that it does not dilute the ratios.
double clockReadingNs()
{
    std::vector<double> costs;
    for (int i = 0; i < 201; ++i) {
        const qint64 first = threadCpuNs();
        costs.push_back(double(threadCpuNs() - first));
    }
    return median(costs).value;
}

// Makes count requests, each after the previous one has answered; failures counts the failed ones.
// The replies each request leaves to be deleted later are deleted inside the timing, so that every
// way of sending pays for its own clean-up and not for the one before it.
Cost sequential(int count, const Send &send, int &failures)
{
    static const double clockReading = clockReadingNs();
    QEventLoop loop;
    int left = count;
    const Done next = [&](bool ok) {
        failures += ok ? 0 : 1;
        if (--left == 0)
            loop.quit();
        else
            send(next);
    };
    const qint64 cpu = threadCpuNs();
    QElapsedTimer wall;
    wall.start();
    send(next);
    loop.exec();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    const double wallNs = double(wall.nsecsElapsed());
    const double cpuNs = double(threadCpuNs() - cpu) - clockReading;
    return {wallNs / count, cpuNs / count};
}

// The library's GET, with everything it does per request: the "Submit Url" and "Authorization" log
// lines, the token check (a token is held), the form-encoded query, the headers, its own deadline
// and redirect policy, and judging and decoding the answer.
// The same GET in the client's form: a reply that finishes, through the facade's manager.
Send clientGet()
{
    return [](const Done &done) {
        bvt::Reply *reply = bvt::Client::instance()->get(
                QStringLiteral("/echo"), {{QStringLiteral("a"), QStringLiteral("1")}});
        QObject::connect(reply, &bvt::Reply::finished, reply,
                         [reply, &done] { done(reply->error() == bvt::Reply::NoError); });
    };
}

Send libraryGet(const std::shared_ptr<BVTManager> &manager)
{
    return [manager](const Done &done) {
        manager->getUrl(
                QStringLiteral("/echo"), {{QStringLiteral("a"), QStringLiteral("1")}},
                [&done](const QVariant &) { done(true); },
                [&done](const QString &) { done(false); });
    };
}

bool isJsonMediaType(const QByteArray &contentType)
{
    const qsizetype semicolon = contentType.indexOf(';');
    const QByteArray type =
            (semicolon < 0 ? contentType : contentType.first(semicolon)).trimmed().toLower();
    return type == "application/json" || type == "text/json" || type == "text/javascript";
}

// The same GET as an application would make it by hand, doing what the library must do for it:
// the token's expiry checked, the same URL and headers (the bearer header built from the token for
// each request), a time-out of the same length, redirects not followed, the
// answer accepted on a 2xx status with a JSON content type and decoded to a QVariant. It writes no
// log lines.
Send bareGet(QNetworkAccessManager &network, const QString &token, const QDateTime &expires)
{
    return [&network, token, expires](const Done &done) {
        if (!(expires > QDateTime::currentDateTimeUtc()))
            return done(false);
        QNetworkRequest request(QUrl(bvt::serviceOrigin() + QStringLiteral("/echo?a=1")));
        request.setRawHeader("Authorization", "Bearer " + token.toUtf8());
        request.setRawHeader("Accept", bvt::vendorMediaType);
        request.setRawHeader("Content-Type", "application/json;");
        request.setTransferTimeout(bvt::HttpClient::defaultTimeoutMs);
        request.setAttribute(QNetworkRequest::RedirectPolicyAttribute,
                             QNetworkRequest::ManualRedirectPolicy);
        QNetworkReply *reply = network.get(request);
        QObject::connect(reply, &QNetworkReply::finished, reply, [reply, &done] {
            reply->deleteLater();
            const int status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
            const QVariant answer = QJsonDocument::fromJson(reply->readAll()).toVariant();
            done(status >= 200 && status <= 299 && isJsonMediaType(reply->rawHeader("Content-Type"))
                 && answer.isValid());
        });
    };
}

// Library over bare, per request: the ratio of the two figures in each round, the median over the
// rounds. Short rounds that alternate the sides let a change in the machine's load touch all sides
// alike, and the median keeps the rounds another process interrupted out of the figures.
const int rounds = 301;
const int perRound = 5;

// Also with the default category's info lines off (as QT_LOGGING_RULES="default.info=false" does):
// the lines are still composed then, only not written, so the difference is what writing them
// costs.
struct Comparison
{
    Median wallRatio;
    Median cpuRatio;
    Median quietWallRatio;
    Median quietCpuRatio;
    Median clientWallRatio; // the client's reply form over the described call
    Median clientCpuRatio;
    Cost library; // medians per request
    Cost quietLibrary;
    Cost bare;
    int failures = 0;
};

// One of the three ways of making the GET that are compared.
struct Side
{
    Send send;
    bool logLines = true;

    Cost measure(int count, int &failures) const
    {
        if (logLines)
            return sequential(count, send, failures);
        QLoggingCategory::setFilterRules(QStringLiteral("default.info=false"));
        const Cost cost = sequential(count, send, failures);
        QLoggingCategory::setFilterRules(QString());
        return cost;
    }
};

// The token first, so that no timed request fetches one.
bool holdToken(const std::shared_ptr<BVTManager> &manager)
{
    bool held = false;
    QEventLoop loop;
    manager->verifyAuthenticated(
            [&](const QVariant &) {
                held = true;
                loop.quit();
            },
            [&](const BVTError &) { loop.quit(); });
    loop.exec();
    return held;
}

Comparison compare(const std::shared_ptr<BVTManager> &manager, QNetworkAccessManager &network)
{
    Comparison result;
    if (!holdToken(manager)) {
        result.failures = 1;
        return result;
    }

    enum { Library, QuietLibrary, ClientForm, Bare, SideCount };
    const Side sides[SideCount] = {
            {libraryGet(manager), true},
            {libraryGet(manager), false},
            {clientGet(), true},
            {bareGet(network, manager->access_token(), manager->access_token_expires()), true}};
    for (const Side &side : sides) // warm up: connection, caches
        side.measure(50, result.failures);

    std::vector<double> wall[SideCount], cpu[SideCount], wallRatio[Bare], cpuRatio[Bare];
    for (int round = 0; round < rounds; ++round) {
        Cost cost[SideCount];
        for (int step = 0; step < SideCount; ++step) {
            const int side = (round + step) % SideCount; // each side in turn goes first
            cost[side] = sides[side].measure(perRound, result.failures);
        }
        for (int side = 0; side < SideCount; ++side) {
            wall[side].push_back(cost[side].wall);
            cpu[side].push_back(cost[side].cpu);
        }
        for (int side = 0; side < Bare; ++side) {
            wallRatio[side].push_back(cost[side].wall / cost[Bare].wall);
            cpuRatio[side].push_back(cost[side].cpu / cost[Bare].cpu);
        }
    }
    result.wallRatio = median(wallRatio[Library]);
    result.cpuRatio = median(cpuRatio[Library]);
    result.quietWallRatio = median(wallRatio[QuietLibrary]);
    result.quietCpuRatio = median(cpuRatio[QuietLibrary]);
    std::vector<double> clientWall, clientCpu;
    for (size_t round = 0; round < wall[Library].size(); ++round) {
        clientWall.push_back(wall[ClientForm][round] / wall[Library][round]);
        clientCpu.push_back(cpu[ClientForm][round] / cpu[Library][round]);
    }
    result.clientWallRatio = median(clientWall);
    result.clientCpuRatio = median(clientCpu);
    result.library = {median(wall[Library]).value, median(cpu[Library]).value};
    result.quietLibrary = {median(wall[QuietLibrary]).value, median(cpu[QuietLibrary]).value};
    result.bare = {median(wall[Bare]).value, median(cpu[Bare]).value};
    return result;
}

// Sends total GETs keeping at most inFlight under way; returns the connections the service saw.
int connectionsFor(ServiceThread &service, int total, int inFlight)
{
    bvt::ServiceRouter network(service.baseUrl());
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
    bvt::ServiceRouter network(service.baseUrl());
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

// Both sides reach the server through the same kind of router, so both pay for the routing.
Comparison compareAgainst(const QUrl &server)
{
    bvt::ServiceRouter network(server);
    bvt::setNetworkAccessManager(&network);
    BVT::initWithLaunchOptions({}, clientId, clientSecret); // the client's
    const Comparison comparison =
            compare(BVTManager::initWithLaunchOptions({}, clientId, clientSecret), network);
    bvt::setNetworkAccessManager(nullptr);
    return comparison;
}

void printRow(const char *measure, const QByteArray &value, const char *target = "")
{
    std::printf("%-60s %21s %15s\n", measure, value.constData(), target);
}

QByteArray number(double value, int decimals)
{
    return QByteArray::number(value, 'f', decimals);
}

QByteArray ratio(const Median &median)
{
    return number(median.value, 3) + " (" + number(median.low, 2) + "-" + number(median.high, 2)
            + ")";
}

QByteArray microseconds(const Cost &cost)
{
    return number(cost.wall / 1000, 1) + " / " + number(cost.cpu / 1000, 1);
}

void printComparison(const char *title, const Comparison &c)
{
    printRow(title, "");
    printRow("  wall time per GET, library/bare (95% range)", ratio(c.wallRatio), "<= 1.05");
    printRow("  calling thread's CPU time per GET, library/bare", ratio(c.cpuRatio), "<= 1.10");
    printRow("  the same with log lines off (default.info=false): wall", ratio(c.quietWallRatio));
    printRow("                                                    CPU", ratio(c.quietCpuRatio));
    printRow("  the client's reply form over the described call: wall", ratio(c.clientWallRatio),
             "<= 1.03");
    printRow("                                                    CPU", ratio(c.clientCpuRatio),
             "<= 1.03");
    printRow("  microseconds per GET, wall / CPU: library", microseconds(c.library));
    printRow("                                    library, log lines off",
             microseconds(c.quietLibrary));
    printRow("                                    bare QNetworkAccessManager",
             microseconds(c.bare));
    printRow("  the library's extra CPU per GET (us), of it writing log lines",
             number((c.library.cpu - c.bare.cpu) / 1000, 1) + " / "
                     + number((c.library.cpu - c.quietLibrary.cpu) / 1000, 1));
    if (c.failures > 0)
        printRow("  FAILED requests (the figures mean nothing)", QByteArray::number(c.failures));
}

// Only count GETs of one side against the raw server, so that a profiler sees that side alone.
int profile(const QString &side, int count, const QUrl &server)
{
    const QStringList sides{QStringLiteral("library"), QStringLiteral("bare"),
                            QStringLiteral("client")};
    if (!sides.contains(side) || count < 1) {
        std::fprintf(stderr, "bench_requests: profile library|bare|client [COUNT]\n");
        return 2;
    }
    bvt::ServiceRouter network(server);
    bvt::setNetworkAccessManager(&network);
    const auto manager = BVTManager::initWithLaunchOptions({}, clientId, clientSecret);
    int failures = holdToken(manager) ? 0 : 1;
    BVT::initWithLaunchOptions({}, clientId, clientSecret); // the client's
    const Send send = side == QLatin1String("library") ? libraryGet(manager)
            : side == QLatin1String("client")
            ? clientGet()
            : bareGet(network, manager->access_token(), manager->access_token_expires());
    sequential(50, send, failures);
    const Cost cost = sequential(count, send, failures);
    bvt::setNetworkAccessManager(nullptr);
    std::printf("%s, %d GETs: microseconds per GET, wall / CPU: %.1f / %.1f%s\n", qPrintable(side),
                count, cost.wall / 1000, cost.cpu / 1000, failures > 0 ? " (some FAILED)" : "");
    return failures > 0 ? 1 : 0;
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    // Each manager registers the device on its first run; keep that out of the user's settings.
    QCoreApplication::setOrganizationName(QStringLiteral("BrevantiBench"));
    QStandardPaths::setTestModeEnabled(true);
    RawServerThread raw;
    if (raw.baseUrl().isEmpty()) {
        std::fprintf(stderr, "bench_requests: the raw server cannot listen\n");
        return 1;
    }
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.value(1) == QLatin1String("profile"))
        return profile(arguments.value(2), arguments.value(3, QStringLiteral("20000")).toInt(),
                       raw.baseUrl());
    ServiceThread service;

    const Comparison againstService = compareAgainst(service.baseUrl());
    const Comparison againstRaw = compareAgainst(raw.baseUrl());

    const int sequentialConnections = connectionsFor(service, 200, 1);
    const int parallelConnections = connectionsFor(service, 200, 50);
    const FirstRun first = firstRun(service);

    const QByteArray title = "measure (medians of " + QByteArray::number(rounds)
            + " interleaved rounds of " + QByteArray::number(perRound) + " GETs a side)";
    printRow(title.constData(), "value", "target");
    printComparison("GETs against the local service", againstService);
    printComparison("GETs against a minimal raw server (the client's cost alone)", againstRaw);
    if (!QLoggingCategory::defaultCategory()->isInfoEnabled())
        printRow("  (log lines were off throughout: QT_LOGGING_RULES turns them off)", "");
    printRow("TCP connections, 200 GETs one at a time", QByteArray::number(sequentialConnections),
             "<= 6");
    printRow("TCP connections, 200 GETs 50 at a time", QByteArray::number(parallelConnections),
             "<= 6");
    printRow("round trips of a first-run registration", QByteArray::number(first.roundTrips), "2");
    printRow("BVT::initWithLaunchOptions returns after (ms)", number(first.initMs, 3), "< 1");
    return againstService.failures + againstRaw.failures > 0 ? 1 : 0;
}
