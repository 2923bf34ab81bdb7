#include "localservice.h"
#include "outcomes.h"

#include "client/httpclient.h"
#include "client/origin.h"

#include <Brevanti/BVT.h>

#include <QtNetwork>
#include <QtTest>

using bvtsim::Fault;
using namespace std::chrono_literals;

namespace {

// How a row must end: the success callback, the failure callback without an answer (null text) or
// with the answer's body, or only the log line of a token that could not be had.
enum class Expect { Success, NullText, BodyText, NoToken };

bool fetchToken(const std::shared_ptr<BVTManager> &manager)
{
    bool ready = false;
    manager->verifyAuthenticated([&ready](const QVariant &) { ready = true; }, nullptr);
    return QTest::qWaitFor([&ready] { return ready; }, 10000);
}

} // namespace

Q_DECLARE_METATYPE(Expect)

// Whatever the network or the service does, each call ends in exactly one outcome, reaches the
// service at most once, reaches no other host, and leaves the stored identifiers alone.
class TestFaults : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase()
    {
        m_local = std::make_unique<LocalService>();
        m_elsewhere = std::make_unique<bvtsim::Service>();
        QVERIFY(m_elsewhere->listen());
        // Registers the device (unless an earlier run did), so that later managers send nothing.
        m_store = BVTManager::initWithLaunchOptions({}, LocalService::clientId,
                                                    LocalService::clientSecret);
        QTRY_VERIFY(!m_store->currentDevice().isNull());
        QVERIFY(fetchToken(m_store));
        m_log = std::make_unique<LogCapture>();
    }

    void init()
    {
        m_local->reset();
        m_elsewhere->clearRequests();
        LogCapture::clear();
        // Qt's warnings tell of misuse, such as reading a reply that was aborted.
        QTest::failOnWarning(QRegularExpression(QStringLiteral(".")));
    }

    void cleanup()
    {
        m_local->routeLibraryHere();
        m_nowhere.reset();
        m_untrusted.reset();
        bvt::HttpClient::setTimeoutMs(bvt::HttpClient::defaultTimeoutMs);
        bvt::HttpClient::setAnswerLimit(bvt::HttpClient::defaultAnswerLimit);
    }

    void faultEndsInOneOutcome_data()
    {
        QTest::addColumn<QByteArray>("target"); // "token" or the verb of the request
        QTest::addColumn<Fault>("fault");
        QTest::addColumn<QByteArray>("reach"); // "service"; "refused" or "untrusted": no answer
        QTest::addColumn<Expect>("expect");

        // Each rule once for the token request and once for a request, the verbs taking turns.
        const auto rows = [&](const char *name, const QByteArray &verb, const Fault &fault,
                              Expect onRequest, const QByteArray &reach = "service") {
            QTest::addRow("token %s", name)
                    << QByteArray("token") << fault << reach << Expect::NoToken;
            QTest::addRow("%s %s", verb.constData(), name) << verb << fault << reach << onRequest;
        };
        rows("connection refused", "GET", {}, Expect::NullText, "refused");
        rows("untrusted certificate", "POST", {}, Expect::NullText, "untrusted");
        // The half sent before the reset is JSON on its own, so only the reset tells it is cut.
        rows("reset mid-body", "PATCH", Fault::cut("[1,2,3,4][1,2,3,4]"), Expect::BodyText);
        rows("503 html", "GET", Fault::answer(503, "<html>Service Unavailable</html>", "text/html"),
             Expect::BodyText);
        rows("200 not json", "PATCH", Fault::answer(200, "this is not JSON"), Expect::BodyText);
        rows("wrong content type", "GET", Fault().withContentType("text/plain"), Expect::BodyText);
        rows("slower than the time-out", "POST", Fault::delay(1500ms), Expect::NullText);
        // The time-out ends it after half the body arrived.
        rows("stalls mid-body", "GET", Fault::stall(R"({"cut":"here"}{"never":"sent"})"),
             Expect::BodyText);
        // Qt would send a request again by itself when the connection closes unanswered.
        rows("dropped before the answer", "GET", Fault::drop(), Expect::NullText);
        // A redirect is an answer like any other: never followed, to another host or the same one.
        const QByteArray elsewhere = m_elsewhere->baseUrl().toEncoded() + "/echo";
        const auto redirect = [](int status, const QByteArray &location) {
            return Fault::answer(status, "moved", "text/html").withHeader("Location", location);
        };
        rows("redirect 302 elsewhere", "GET", redirect(302, elsewhere), Expect::BodyText);
        rows("redirect 307 elsewhere", "POST", redirect(307, elsewhere), Expect::BodyText);
        rows("redirect 302 same origin", "PATCH", redirect(302, "/echo"), Expect::BodyText);

        // Answers that never end, or end too late, or whose framing cannot be trusted: each fails
        // as soon as it is seen for what it is, and no length the answer names is trusted.
        const auto answer = [](bvtsim::Pace pace, const QByteArray &header = {},
                               const QByteArray &value = {}) {
            const Fault fault = Fault::answer(200, "[" + QByteArray("0,").repeated(20) + "0]");
            return (header.isEmpty() ? fault : fault.withHeader(header, value)).paced(pace);
        };
        using bvtsim::Pace;
        rows("chunks without end", "GET", answer(Pace::EndlessChunks), Expect::NullText);
        rows("huge length announced", "POST", answer(Pace::HugeLength), Expect::NullText);
        rows("one byte at a time", "PATCH", answer(Pace::Trickle), Expect::BodyText);
        rows("two lengths", "GET", answer(Pace::Whole, "Content-Length", "5"), Expect::NullText);
        rows("length and chunks", "PATCH", answer(Pace::Whole, "Transfer-Encoding", "chunked"),
             Expect::NullText);

        // About 10 MB of JSON: an array of 1 KB objects.
        const QByteArray element = "{\"name\":\"" + QByteArray(1000, 'x') + "\"},";
        QByteArray array = "[" + element.repeated(10000);
        array.back() = ']';
        QTest::addRow("GET 10 MB") << QByteArray("GET") << Fault::answer(200, array)
                                   << QByteArray("service") << Expect::Success;

        // A token that no header can carry is no token.
        for (const QByteArray token :
             {R"(CR LF\r\n\r\nGET /smuggled HTTP/1.1\r\nHost: x)", R"(NUL\u0000)"}) {
            const QByteArray served = "{\"expires_in\":7200,\"created_at\":"
                    + QByteArray::number(QDateTime::currentSecsSinceEpoch())
                    + ",\"access_token\":\"" + token + "\"}";
            QTest::addRow("token with %s", token.left(token.indexOf('\\')).constData())
                    << QByteArray("token") << Fault::answer(200, served) << QByteArray("service")
                    << Expect::NoToken;
        }
    }

    void faultEndsInOneOutcome()
    {
        QFETCH(QByteArray, target);
        QFETCH(Fault, fault);
        QFETCH(QByteArray, reach);
        QFETCH(Expect, expect);

        m_store->setBVTUserId("user-before");
        m_store->setBVTDeviceToken("token-before");
        const QString device = m_store->currentDevice();
        const bool onToken = target == "token";
        const QByteArray verb = onToken ? QByteArray("POST") : target;
        auto manager = newManager();
        if (!onToken) // the request alone meets the fault
            QVERIFY(fetchToken(manager));
        m_local->service().setFault(verb, onToken ? "/oauth/token" : "/echo", fault);
        QNetworkAccessManager *network = routeTo(reach);
        QVERIFY(network);
        if (fault.delayMs > 0 || fault.stallAfterHalf || fault.pace == bvtsim::Pace::Trickle)
            bvt::HttpClient::setTimeoutMs(300); // well under the delay: the answer comes too late
        if (fault.pace != bvtsim::Pace::Whole)  // passed sooner, to the same effect
            bvt::HttpClient::setAnswerLimit(256 * 1024);
        LogCapture::clear();
        m_local->service().clearRequests();

        // Every exchange finishes at the network access manager, answered or not; the outcome is
        // due by then.
        QSignalSpy finished(network, &QNetworkAccessManager::finished);
        Outcomes outcomes;
        call(manager, verb, "/echo", {}, outcomes);
        while (finished.size() < 1 && finished.wait(30000)) { }
        QCOMPARE(finished.size(), 1);
        const QStringList noToken = m_log->linesStartingWith("Failed to get access token: ");
        QCOMPARE(outcomes.count() + noToken.size(), 1);
        if (expect == Expect::NoToken) // not kept: the next call asks again
            QVERIFY(manager->access_token().isNull());
        QCOMPARE(outcomes.answers.size(), expect == Expect::Success ? 1 : 0);
        QCOMPARE(outcomes.texts.size(), expect == Expect::NullText || expect == Expect::BodyText);
        if (!outcomes.texts.isEmpty()) {
            QCOMPARE(outcomes.texts.first().isNull(), expect == Expect::NullText);
            const qsizetype sent = fault.truncateBody ? fault.body.size() / 2 : fault.body.size();
            if (expect == Expect::BodyText && !fault.body.isNull()
                && fault.pace == bvtsim::Pace::Whole) // all, or the half that came
                QCOMPARE(outcomes.texts.first(), QString::fromUtf8(fault.body.left(sent)));
        }
        if (!outcomes.answers.isEmpty() && !fault.body.isNull()) // the huge array
            QCOMPARE(outcomes.answers.first().toList().size(), 10000);
        if (verb != "GET") {
            const QString name = verb == "POST" ? "Post " : "Patch ";
            QCOMPARE(m_log->linesStartingWith(name + "Success: ").size(), outcomes.answers.size());
            QCOMPARE(m_log->linesStartingWith(name + "Fail: ").size(), outcomes.texts.size());
        }
        // What reached the service: each call at most once, and without a token no request at all.
        const int tokenRequests = int(m_local->requestsFor("/oauth/token").size());
        const int requests = int(m_local->service().requests().size()) - tokenRequests;
        // Qt sends a GET once more when its connection closes unanswered, and only a GET.
        const bool resent = verb == "GET" && !onToken && fault.dropConnection;
        const int reached = reach == "service" ? (resent ? 2 : 1) : 0;
        QCOMPARE(tokenRequests, onToken ? reached : 0);
        QCOMPARE(requests, onToken ? 0 : reached);
        if (m_untrusted)
            QCOMPARE(m_untrusted->requests().size(), 0);
        QCOMPARE(m_elsewhere->requests().size(), 0);
        QCOMPARE(m_store->currentDevice(), device);
        QCOMPARE(m_store->currentUser(), "user-before");
        QCOMPARE(m_store->currentDeviceToken(), "token-before");
    }

    void droppedConnectionFailsOnlyWhatItMust_data()
    {
        QTest::addColumn<QByteArray>("verb");
        for (const QByteArray verb : {"GET", "POST", "PATCH"})
            QTest::newRow(verb.constData()) << verb;
    }

    // Twenty calls at once, one connection closed unanswered: a GET is sent again and succeeds, a
    // POST or PATCH fails alone and reaches the service at most once, and every other call
    // succeeds with its own answer.
    void droppedConnectionFailsOnlyWhatItMust()
    {
        QFETCH(QByteArray, verb);
        constexpr int count = 20;
        auto manager = newManager();
        QVERIFY(fetchToken(manager));
        m_local->service().setFault(verb, "/echo", Fault::drop().times(1));
        m_local->service().clearRequests();
        std::vector<Outcomes> outcomes(count);
        for (int i = 0; i < count; ++i)
            call(manager, verb, "/echo", {{"i", QString::number(i)}}, outcomes[size_t(i)]);
        QCOMPARE(m_local->settledExchanges(), count + 1); // the token's exchange and the calls'
        const auto failed = std::count_if(outcomes.cbegin(), outcomes.cend(),
                                          [](const Outcomes &o) { return !o.texts.isEmpty(); });
        const auto answered =
                std::count_if(outcomes.cbegin(), outcomes.cend(),
                              [](const Outcomes &o) { return o.answers.size() == 1; });
        QCOMPARE(failed, verb == "GET" ? 0 : 1);
        QCOMPARE(answered, count - failed);
        for (int i = 0; i < count; ++i) { // each answer reaches its own call
            const QVariantMap echo = outcomes[size_t(i)].answers.value(0).toMap();
            if (!echo.isEmpty())
                QCOMPARE(echo[verb == "GET" ? "query" : "form"].toMap()["i"], QString::number(i));
        }
        QMap<QByteArray, int> arrivals; // by the call's index
        for (const bvtsim::RecordedRequest &request : m_local->requestsFor("/echo"))
            ++arrivals[verb == "GET" ? request.query : request.body];
        QCOMPARE(arrivals.size(), count);
        QCOMPARE(m_local->requestsFor("/echo").size(), count + 1 - failed);
    }

    void pathLeavingTheOriginSendsNothing_data()
    {
        QTest::addColumn<QByteArray>("verb");
        QTest::addColumn<QString>("path"); // PORT: the port of the other origin
        QTest::addColumn<bool>("leaves");
        QTest::newRow("user info, GET") << QByteArray("GET") << "@127.0.0.1:PORT/echo" << true;
        QTest::newRow("other port, PATCH") << QByteArray("PATCH") << ":PORT/echo" << true;
        QTest::newRow("longer host name, GET") << QByteArray("GET") << ".invalid/echo" << true;
        QTest::newRow("its own port spelt out, GET") << QByteArray("GET") << ":443/echo" << false;
    }

    // The path is joined to the origin as text, so it could name another host, which would receive
    // the bearer token. Such a request fails without a byte sent, token request included.
    void pathLeavingTheOriginSendsNothing()
    {
        QFETCH(QByteArray, verb);
        QFETCH(QString, path);
        QFETCH(bool, leaves);
        path.replace("PORT", QString::number(m_elsewhere->port()));
        const int connections = m_elsewhere->connectionCount();
        auto manager = newManager();
        Outcomes outcomes;
        call(manager, verb, path, {}, outcomes);
        QVERIFY(outcomes.texts.isEmpty()); // later, as any outcome
        QTRY_COMPARE(outcomes.count(), 1);
        QVERIFY(m_local->nothingUnderWay());
        QCOMPARE(m_elsewhere->connectionCount(), connections);
        QCOMPARE(m_local->service().requests().size(), leaves ? 0 : 2); // a token request and it
        QCOMPARE(outcomes.answers.size(), leaves ? 0 : 1);
        QVERIFY(outcomes.texts.value(0).isNull());
        const QString line =
                "Not sent: the URL leaves the service's origin: " + bvt::serviceOrigin();
        QCOMPARE(m_log->linesStartingWith("Not sent"),
                 leaves ? QStringList{line + path} : QStringList());
    }

    void unsendableTokenIsNoToken_data()
    {
        QTest::addColumn<QByteArray>("token");
        QTest::newRow("CRLF") << QByteArray(R"(tok\r\n\r\nGET /smuggled HTTP/1.1\r\nHost: x)");
        QTest::newRow("NUL") << QByteArray(R"(tok\u0000more)");
    }

    // A token the host set that no header can carry is no token (one the service serves is a row
    // of the faults above).
    void unsendableTokenIsNoToken()
    {
        QFETCH(QByteArray, token); // JSON string text, escapes included
        auto manager = newManager();
        manager->setAccess_token(
                QJsonDocument::fromJson("[\"" + token + "\"]").array().first().toString());
        manager->setAccess_token_expires(QDateTime::currentDateTimeUtc().addSecs(3600));
        m_local->service().clearRequests();
        LogCapture::clear();
        Outcomes outcomes;
        call(manager, "PATCH", "/echo", {}, outcomes);
        QCOMPARE(m_local->settledExchanges(), 0);
        QCOMPARE(m_log->linesStartingWith("Failed to get access token: ").size(), 1);
        QCOMPARE(outcomes.count(), 0);
        QVERIFY(m_local->service().requests().isEmpty());
    }

    // Late: requests queued in the deleted manager may still reach the service afterwards.
    void deletedManagerStillEndsEveryCall_data()
    {
        QTest::addColumn<QString>("path"); // the route that holds its answer back
        QTest::newRow("during the token fetch") << QStringLiteral("/oauth/token");
        QTest::newRow("during the request") << QStringLiteral("/echo");
    }

    void deletedManagerStillEndsEveryCall()
    {
        QFETCH(QString, path);
        constexpr int count = 200;
        const bool duringToken = path == "/oauth/token";
        auto manager = newManager();
        if (!duringToken)
            QVERIFY(fetchToken(manager));
        auto *hostManager = new bvt::ServiceRouter(m_local->service().baseUrl());
        bvt::setNetworkAccessManager(hostManager);
        m_local->service().setFault("*", path, Fault::delay(60s));
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
        // The outcomes are queued, not delivered from inside the host's delete.
        QTRY_COMPARE_WITH_TIMEOUT(texts.size() + noToken(), count, 2000);
        QCOMPARE(answers, 0);
        QCOMPARE(noToken(), duringToken ? count : 0); // and the texts the other calls
        QVERIFY(std::all_of(texts.cbegin(), texts.cend(),
                            [](const QString &t) { return t.isNull(); }));
    }

private:
    // The library's network access for a row: the local service, a closed port, or an HTTPS service
    // whose certificate no one trusts.
    QNetworkAccessManager *routeTo(const QByteArray &reach)
    {
        if (reach == "refused") {
            QTcpServer probe;
            if (!probe.listen(QHostAddress::LocalHost))
                return nullptr;
            const QUrl closed(QStringLiteral("http://127.0.0.1:%1").arg(probe.serverPort()));
            probe.close();
            m_nowhere = std::make_unique<bvt::ServiceRouter>(closed);
        } else if (reach == "untrusted") {
            QFile pem(QStringLiteral(TEST_SOURCE_DIR "/untrusted.pem"));
            if (!pem.open(QIODevice::ReadOnly))
                return nullptr;
            const QByteArray both = pem.readAll();
            m_untrusted = std::make_unique<bvtsim::Service>();
            m_untrusted->addClient(LocalService::clientId, LocalService::clientSecret);
            if (!m_untrusted->listenTls(QSslCertificate(both), QSslKey(both, QSsl::Ec)))
                return nullptr;
            m_nowhere = std::make_unique<bvt::ServiceRouter>(m_untrusted->baseUrl());
        } else {
            return m_local->network();
        }
        bvt::setNetworkAccessManager(m_nowhere.get());
        return m_nowhere.get();
    }

    std::unique_ptr<LocalService> m_local;
    std::unique_ptr<LogCapture> m_log;
    std::unique_ptr<bvt::ServiceRouter> m_nowhere; // routes to a closed port
    std::unique_ptr<bvtsim::Service> m_untrusted;  // HTTPS with a certificate nobody trusts
    std::unique_ptr<bvtsim::Service> m_elsewhere;  // another origin, which must hear nothing
    std::shared_ptr<BVTManager> m_store;           // reads and writes the identifiers
};

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setOrganizationName("BrevantiTests");
    QStandardPaths::setTestModeEnabled(true);
    TestFaults test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_faults.moc"
