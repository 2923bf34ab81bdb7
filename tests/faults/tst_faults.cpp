#include "localservice.h"
#include "logcapture.h"

#include "client/httpclient.h"
#include "client/origin.h"

#include <Brevanti/BVT.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QProcess>
#include <QRegularExpression>
#include <QSettings>
#include <QStandardPaths>
#include <QTcpServer>
#include <QTest>
#include <QUuid>

#include <csignal>
#include <cstdio>

namespace {

// How a row must end: the success callback, the failure callback without an answer (null text) or
// with the answer's body, or only the log line of a token that could not be had.
enum class Expect { Success, NullText, BodyText, NoToken };

std::shared_ptr<BVTManager> newManager()
{
    auto manager = BVTManager::initWithLaunchOptions({}, LocalService::clientId,
                                                     LocalService::clientSecret);
    LogCapture::clear(); // its "Initializing device" line is not what these tests check
    return manager;
}

void call(const std::shared_ptr<BVTManager> &manager, const QByteArray &verb, QVariantList &answers,
          QStringList &texts)
{
    const auto send = verb == "GET" ? &BVTManager::getUrl
            : verb == "POST"        ? &BVTManager::postUrl
                                    : &BVTManager::patchUrl;
    (manager.get()->*send)(
            "/echo", {}, [&answers](const QVariant &answer) { answers.append(answer); },
            [&texts](const QString &text) { texts.append(text); });
}

bool fetchToken(const std::shared_ptr<BVTManager> &manager)
{
    bool ready = false;
    manager->verifyAuthenticated([&ready](const QVariant &) { ready = true; }, nullptr);
    return QTest::qWaitFor([&ready] { return ready; }, 10000);
}

} // namespace

Q_DECLARE_METATYPE(Expect)

class TestFaults : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void faultEndsInOneOutcome_data();
    void faultEndsInOneOutcome();
    void thousandRequestsWithoutAToken();
    void deletedManagerStillEndsEveryCall_data();
    void deletedManagerStillEndsEveryCall();
    void unsendableTokenIsNoToken_data();
    void unsendableTokenIsNoToken();
    void storeWriteSurvivesSigkill();

private:
    std::unique_ptr<LocalService> m_local;
    std::unique_ptr<LogCapture> m_log;
    std::unique_ptr<bvtsim::LoopbackRouter> m_nowhere; // routes to a closed port
    std::unique_ptr<bvtsim::Service> m_elsewhere;      // another origin, which must hear nothing
    std::shared_ptr<BVTManager> m_store;               // reads and writes the identifiers
    QByteArray m_tokenMembers; // of a token the service accepts for the whole run
};

void TestFaults::initTestCase()
{
    m_local = std::make_unique<LocalService>();
    m_elsewhere = std::make_unique<bvtsim::Service>();
    QVERIFY(m_elsewhere->listen());
    // Registers the device (unless an earlier run did), so that later managers send nothing.
    m_store = BVTManager::initWithLaunchOptions({}, LocalService::clientId,
                                                LocalService::clientSecret);
    QTRY_VERIFY(!m_store->currentDevice().isNull());
    QVERIFY(fetchToken(m_store));
    const qint64 expires = m_store->access_token_expires().toSecsSinceEpoch();
    m_tokenMembers = R"("access_token":")" + m_store->access_token().toUtf8()
            + R"(","expires_in":7200,"created_at":)" + QByteArray::number(expires - 7200);
}

void TestFaults::init()
{
    m_local->reset();
    m_elsewhere->clearRequests();
    m_log = std::make_unique<LogCapture>();
    // Qt's warnings tell of misuse, such as reading a reply that was aborted.
    QTest::failOnWarning(QRegularExpression(QStringLiteral(".")));
}

void TestFaults::cleanup()
{
    m_local->routeLibraryHere();
    m_nowhere.reset();
    bvt::HttpClient::setTimeoutMs(bvt::HttpClient::defaultTimeoutMs);
    m_log.reset();
}

void TestFaults::faultEndsInOneOutcome_data()
{
    QTest::addColumn<QByteArray>("target"); // "token" or the verb of the request
    QTest::addColumn<bvtsim::Fault>("fault");
    QTest::addColumn<bool>("refused");
    QTest::addColumn<Expect>("expect");

    const QByteArrayList targets{"token", "GET", "POST", "PATCH"};
    const auto rows = [&](const char *name, const bvtsim::Fault &fault, Expect onRequest,
                          bool refused = false) {
        for (const QByteArray &target : targets)
            QTest::addRow("%s %s", target.constData(), name)
                    << target << fault << refused
                    << (target == "token" ? Expect::NoToken : onRequest);
    };
    rows("connection refused", {}, Expect::NullText, true);
    // The half sent before the reset is JSON on its own, so only the reset tells it is cut.
    rows("reset mid-body", {0, 200, "[1,2,3,4][1,2,3,4]", {}, false, true}, Expect::BodyText);
    rows("503 html", {0, 503, "<html>Service Unavailable</html>", "text/html"}, Expect::BodyText);
    rows("200 not json", {0, 200, "this is not JSON", {}}, Expect::BodyText);
    rows("wrong content type", {0, 0, {}, "text/plain"}, Expect::BodyText);
    rows("401", {0, 401, {}, {}}, Expect::BodyText);
    rows("slower than the time-out", {1500, 0, {}, {}}, Expect::NullText);
    rows("truncated json", {0, 200, R"({"a":[1,2)", {}}, Expect::BodyText);
    rows("dropped before the answer", {0, 0, {}, {}, true}, Expect::NullText);
    bvtsim::Fault stalled{0, 200, R"({"cut":"here"}{"never":"sent"})", {}, false, true};
    stalled.stallAfterHalf = true; // the time-out ends it after half the body arrived
    rows("stalls mid-body", stalled, Expect::BodyText);
    // A redirect is an answer like any other: never followed, to another host or the same one.
    const QByteArray elsewhere = m_elsewhere->baseUrl().toEncoded() + "/echo";
    for (const int status : {301, 302, 303, 307, 308}) {
        const QByteArray name = "redirect " + QByteArray::number(status) + " elsewhere";
        rows(name, {0, status, "moved", "text/html", false, false, -1, {{"Location", elsewhere}}},
             Expect::BodyText);
    }
    rows("redirect 302 same origin",
         {0, 302, "moved", "text/html", false, false, -1, {{"Location", "/echo"}}},
         Expect::BodyText);
    rows("redirect 302 without Location", {0, 302, "moved", "text/html"}, Expect::BodyText);

    // About 10 MB of JSON: an array of 1 KB objects, and a valid token padded to that size.
    const QByteArray element = R"({"name":")" + QByteArray(1000, 'x') + R"("},)";
    QByteArray array = "[" + element.repeated(10000);
    array.back() = ']';
    const QByteArray token =
            "{" + m_tokenMembers + R"(,"padding":")" + QByteArray(10 * 1024 * 1024, 'p') + "\"}";
    for (const QByteArray &target : targets)
        QTest::addRow("%s 10 MB", target.constData())
                << target << bvtsim::Fault{0, 200, target == "token" ? token : array, {}} << false
                << Expect::Success;
}

void TestFaults::faultEndsInOneOutcome()
{
    QFETCH(QByteArray, target);
    QFETCH(bvtsim::Fault, fault);
    QFETCH(bool, refused);
    QFETCH(Expect, expect);

    m_store->setBVTUserId("user-before");
    m_store->setBVTDeviceToken("token-before");
    const QString device = m_store->currentDevice();
    const bool onToken = target == "token";
    const QByteArray verb = onToken ? QByteArray("POST") : target;
    auto manager = newManager();
    // A request row holds its token first when the row's conditions would also hit the token.
    if (!onToken && (refused || fault.delayMs > 0))
        QVERIFY(fetchToken(manager));
    m_local->service().setFault(verb, onToken ? "/oauth/token" : "/echo", fault);
    if (refused) {
        QTcpServer probe;
        QVERIFY(probe.listen(QHostAddress::LocalHost));
        const QUrl closed(QStringLiteral("http://127.0.0.1:%1").arg(probe.serverPort()));
        probe.close();
        m_nowhere = std::make_unique<bvtsim::LoopbackRouter>(QUrl(bvt::serviceOrigin()), closed);
        bvt::setNetworkAccessManager(m_nowhere.get());
    }
    if (fault.delayMs > 0 || fault.stallAfterHalf)
        bvt::HttpClient::setTimeoutMs(300); // well under the delay: the answer comes too late
    LogCapture::clear();
    m_local->service().clearRequests();

    QVariantList answers;
    QStringList texts;
    call(manager, verb, answers, texts);
    const auto outcomes = [&] {
        return answers.size() + texts.size()
                + m_log->linesStartingWith("Failed to get access token: ").size();
    };
    QTRY_VERIFY_WITH_TIMEOUT(outcomes() > 0, 30000);
    QTest::qWait(200); // room for a stray repeat
    QCOMPARE(outcomes(), 1);
    QCOMPARE(answers.size(), expect == Expect::Success ? 1 : 0);
    QCOMPARE(texts.size(), expect == Expect::NullText || expect == Expect::BodyText ? 1 : 0);
    if (!texts.isEmpty()) {
        QCOMPARE(texts.first().isNull(), expect == Expect::NullText);
        const qsizetype sent = fault.truncateBody ? fault.body.size() / 2 : fault.body.size();
        if (!fault.body.isNull()) // all of it, or the half sent before the reset
            QCOMPARE(texts.first(), QString::fromUtf8(fault.body.left(sent)));
    }
    if (!answers.isEmpty()) // the echo after a huge token, or the huge array itself
        QVERIFY(onToken ? answers.first().toMap().value("path") == "/echo"
                        : answers.first().toList().size() == 10000);
    if (verb != "GET") {
        const QString name = verb == "POST" ? "Post " : "Patch ";
        QCOMPARE(m_log->linesStartingWith(name + "Success: ").size(), answers.size());
        QCOMPARE(m_log->linesStartingWith(name + "Fail: ").size(), texts.size());
    }
    // What reached the service: each call at most once, and without a token no request at all.
    const int tokenRequests = int(m_local->requestsFor("/oauth/token").size());
    const int requests = int(m_local->service().requests().size()) - tokenRequests;
    const int reached = refused ? 0 : 1;
    QCOMPARE(onToken ? tokenRequests : requests, reached);
    if (onToken)
        QCOMPARE(requests, expect == Expect::Success ? 1 : 0);
    QCOMPARE(m_elsewhere->requests().size(), 0);
    QCOMPARE(m_store->currentDevice(), device);
    QCOMPARE(m_store->currentUser(), "user-before");
    QCOMPARE(m_store->currentDeviceToken(), "token-before");
}

void TestFaults::thousandRequestsWithoutAToken()
{
    constexpr int count = 1000;
    auto manager = newManager();
    QMultiHash<int, QVariant> answers; // by request index, to catch crossed callbacks
    int failures = 0;
    for (int i = 0; i < count; ++i)
        manager->getUrl(
                "/echo", {{"i", QString::number(i)}},
                [&answers, i](const QVariant &answer) { answers.insert(i, answer); },
                [&failures](const QString &) { ++failures; });
    QTRY_COMPARE_WITH_TIMEOUT(answers.size() + failures, count, 60000);
    QTest::qWait(200); // room for a stray repeat
    QCOMPARE(failures, 0);
    for (int i = 0; i < count; ++i) {
        QCOMPARE(answers.count(i), 1);
        QCOMPARE(answers.value(i).toMap().value("query").toMap().value("i").toString(),
                 QString::number(i));
    }
    QCOMPARE(m_local->requestsFor("/oauth/token").size(), count);
}

void TestFaults::deletedManagerStillEndsEveryCall_data()
{
    QTest::addColumn<QString>("path"); // the route that holds its answer back
    QTest::newRow("during the token fetch") << QStringLiteral("/oauth/token");
    QTest::newRow("during the request") << QStringLiteral("/echo");
}

void TestFaults::deletedManagerStillEndsEveryCall()
{
    QFETCH(QString, path);
    constexpr int count = 200;
    const bool duringToken = path == "/oauth/token";
    auto manager = newManager();
    if (!duringToken)
        QVERIFY(fetchToken(manager));
    auto *hostManager =
            new bvtsim::LoopbackRouter(QUrl(bvt::serviceOrigin()), m_local->service().baseUrl());
    bvt::setNetworkAccessManager(hostManager);
    m_local->service().setFault("*", path, {60000, 0, {}, {}});
    m_local->service().clearRequests();
    LogCapture::clear();

    int answers = 0;
    QStringList texts;
    for (int i = 0; i < count; ++i)
        manager->postUrl(
                "/echo", {}, [&answers](const QVariant &) { ++answers; },
                [&texts](const QString &text) { texts.append(text); });
    // The first requests are held at the service, the others queued in the manager.
    QTRY_VERIFY_WITH_TIMEOUT(!m_local->requestsFor(path).isEmpty(), 30000);
    delete hostManager;

    const auto noToken = [this] {
        return int(m_log->linesStartingWith("Failed to get access token: ").size());
    };
    QTRY_COMPARE_WITH_TIMEOUT(texts.size() + noToken(), count, 10000);
    QTest::qWait(200); // room for a stray second outcome
    QCOMPARE(answers, 0);
    QCOMPARE(noToken(), duringToken ? count : 0);
    QCOMPARE(texts.size(), duringToken ? 0 : count);
    QVERIFY(std::all_of(texts.cbegin(), texts.cend(), [](const QString &t) { return t.isNull(); }));
}

void TestFaults::unsendableTokenIsNoToken_data()
{
    QTest::addColumn<QByteArray>("token");
    QTest::addColumn<bool>("fromService"); // else the host sets it
    for (const bool fromService : {true, false}) {
        const char *from = fromService ? "served" : "set by the host";
        QTest::addRow("header, %s", from) << QByteArray(R"(tok\r\nX-Injected: yes)") << fromService;
        QTest::addRow("second request, %s", from)
                << QByteArray(R"(tok\r\n\r\nGET /smuggled HTTP/1.1\r\nHost: x)") << fromService;
        QTest::addRow("bare LF, %s", from) << QByteArray(R"(tok\nX-Injected: yes)") << fromService;
        QTest::addRow("NUL, %s", from) << QByteArray(R"(tok\u0000more)") << fromService;
    }
}

void TestFaults::unsendableTokenIsNoToken()
{
    QFETCH(QByteArray, token); // JSON string text, escapes included
    QFETCH(bool, fromService);

    auto manager = newManager();
    if (fromService) {
        m_local->service().setFault(
                "POST", "/oauth/token",
                {0,
                 200,
                 R"({"access_token":")" + token + R"(","expires_in":7200,"created_at":)"
                         + QByteArray::number(QDateTime::currentSecsSinceEpoch()) + "}",
                 {}});
    } else {
        const QJsonDocument document = QJsonDocument::fromJson("[\"" + token + "\"]");
        manager->setAccess_token(document.array().first().toString());
        manager->setAccess_token_expires(QDateTime::currentDateTimeUtc().addSecs(3600));
    }
    m_local->service().clearRequests();
    LogCapture::clear();

    int outcomes = 0;
    manager->patchUrl(
            "/echo", {}, [&outcomes](const QVariant &) { ++outcomes; },
            [&outcomes](const QString &) { ++outcomes; });
    QTRY_COMPARE(m_log->linesStartingWith("Failed to get access token: ").size(), 1);
    QTest::qWait(100); // room for a request that should not go out
    QCOMPARE(outcomes, 0);
    QCOMPARE(m_local->requestsFor("/echo").size(), 0);
    QCOMPARE(m_local->requestsFor("/smuggled").size(), 0);
    QCOMPARE(m_local->service().requests().size(), fromService ? 1 : 0);
    if (fromService) // not kept: the next call asks again
        QVERIFY(manager->access_token().isNull());
}

void TestFaults::storeWriteSurvivesSigkill()
{
    m_store->setBVTDeviceToken("written-by-the-parent");
    const QString value = "child-" + QUuid::createUuid().toString(QUuid::WithoutBraces);
    QProcess child;
    child.start(QCoreApplication::applicationFilePath(), {"--write-and-wait", value});
    QVERIFY(child.waitForStarted());
    QByteArray out;
    while (!out.contains('\n') && child.waitForReadyRead(30000))
        out += child.readAllStandardOutput();
    QCOMPARE(out, QByteArray("written\n"));
    QCOMPARE(::kill(pid_t(child.processId()), SIGKILL), 0);
    QVERIFY(child.waitForFinished(30000));
    QCOMPARE(child.exitStatus(), QProcess::CrashExit);

    QSettings().sync(); // rereads the file the child replaced
    QCOMPARE(QSettings().value("com.brevanti.ios.BVTDeviceToken").toString(), value);
    QCOMPARE(m_store->getBVTDeviceToken(), value);
}

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setOrganizationName("BrevantiTests");
    QStandardPaths::setTestModeEnabled(true);
    const QStringList arguments = app.arguments();
    const qsizetype mode = arguments.indexOf("--write-and-wait");
    if (mode > 0 && mode + 1 < arguments.size()) {
        // The child of storeWriteSurvivesSigkill: writes, says so, and waits to be killed.
        auto manager = BVTManager::initWithLaunchOptions({}, "child", "child");
        manager->setBVTDeviceToken(arguments.at(mode + 1));
        std::fputs("written\n", stdout);
        std::fflush(stdout);
        return app.exec();
    }
    TestFaults test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_faults.moc"
