#include "tst_requests.h"

#include "client/origin.h"

#include <Brevanti/BVT.h>
#include <Brevanti/BVTManager.h>

#include <QJsonDocument>
#include <QTest>

namespace {

struct Outcome
{
    int successes = 0;
    int failures = 0;
    QVariant response;
    QString text;
};

std::shared_ptr<BVTManager> newManager(const QString &secret = LocalService::clientSecret)
{
    auto manager = BVTManager::initWithLaunchOptions({}, LocalService::clientId, secret);
    LogCapture::clear(); // "Initializing device: …" is checked elsewhere
    return manager;
}

void call(const std::shared_ptr<BVTManager> &manager, const QByteArray &verb, const QString &path,
          const BVTParameters &parameters, Outcome &outcome)
{
    BVTSuccessBlock success = [&outcome](const QVariant &response) {
        ++outcome.successes;
        outcome.response = response;
    };
    BVTFailureBlock failure = [&outcome](const QString &text) {
        ++outcome.failures;
        outcome.text = text;
    };
    if (verb == "GET")
        manager->getUrl(path, parameters, success, failure);
    else if (verb == "POST")
        manager->postUrl(path, parameters, success, failure);
    else
        manager->patchUrl(path, parameters, success, failure);
}

QString origin()
{
    return bvt::serviceOrigin();
}

} // namespace

void TestRequests::initTestCase()
{
    m_local = std::make_unique<LocalService>();
}

void TestRequests::init()
{
    m_local->reset();
    m_log = std::make_unique<LogCapture>();
}

void TestRequests::cleanup()
{
    m_log.reset();
    m_local->routeLibraryHere();
}

void TestRequests::eachVerbSendsItsOwnHeaders_data()
{
    QTest::addColumn<QByteArray>("verb");
    QTest::addColumn<QByteArray>("contentType");
    QTest::addColumn<QByteArray>("query");
    QTest::addColumn<QByteArray>("body");

    QTest::newRow("GET") << QByteArray("GET") << QByteArray("application/json;")
                         << QByteArray("a=1") << QByteArray();
    QTest::newRow("POST") << QByteArray("POST") << QByteArray("application/x-www-form-urlencoded")
                          << QByteArray() << QByteArray("a=1");
    QTest::newRow("PATCH") << QByteArray("PATCH") << QByteArray("application/x-www-form-urlencoded")
                           << QByteArray() << QByteArray("a=1");
}

void TestRequests::eachVerbSendsItsOwnHeaders()
{
    QFETCH(QByteArray, verb);
    QFETCH(QByteArray, contentType);
    QFETCH(QByteArray, query);
    QFETCH(QByteArray, body);

    auto manager = newManager();
    Outcome outcome;
    call(manager, verb, "/echo", {{"a", "1"}}, outcome);
    QTRY_COMPARE(outcome.successes, 1);

    const auto requests = m_local->requestsFor("/echo");
    QCOMPARE(requests.size(), 1);
    const bvtsim::RecordedRequest &request = requests.first();
    QCOMPARE(request.method, verb);
    QCOMPARE(request.header("Authorization"), "Bearer " + manager->access_token().toUtf8());
    QCOMPARE(request.header("Accept"), QByteArray("application/vnd.brevanti.com;version=1"));
    QCOMPARE(request.header("Content-Type"), contentType);
    QCOMPARE(request.query, query);
    QCOMPARE(request.body, body);
    QCOMPARE(outcome.response.toMap().value("method").toByteArray(), verb);
}

void TestRequests::logLinesComeInOrder_data()
{
    QTest::addColumn<QByteArray>("verb");
    QTest::addColumn<QString>("result");

    QTest::newRow("GET") << QByteArray("GET") << QString();
    QTest::newRow("POST") << QByteArray("POST") << "Post Success: ";
    QTest::newRow("PATCH") << QByteArray("PATCH") << "Patch Success: ";
}

void TestRequests::logLinesComeInOrder()
{
    QFETCH(QByteArray, verb);
    QFETCH(QString, result);

    auto manager = newManager();
    Outcome outcome;
    call(manager, verb, "/echo", {}, outcome);
    QStringList expected{"Submit Url: " + origin() + "/echo"};
    if (verb == "GET")
        expected << "Authorization: Basic " + QByteArray("test-client:test-secret").toBase64();
    QCOMPARE(m_log->lines(), expected); // written before the token check

    QTRY_COMPARE(outcome.successes, 1);
    expected << "self.access_token: " + manager->access_token()
             << "self.access_token_expires: "
                    + manager->access_token_expires().toString("yyyy-MM-dd HH:mm:ss +0000");
    if (!result.isEmpty())
        expected << result
                        + QJsonDocument::fromVariant(outcome.response)
                                  .toJson(QJsonDocument::Compact);
    QCOMPARE(m_log->lines(), expected);
}

void TestRequests::pathIsJoinedToTheOriginAsItStands()
{
    auto manager = newManager();
    bool ready = false;
    manager->verifyAuthenticated([&](const QVariant &) { ready = true; }, nullptr);
    QTRY_VERIFY(ready);
    manager->setOrigin(origin() + "/ech");
    m_log->clear();

    Outcome outcome;
    call(manager, "GET", "o", {}, outcome); // no leading "/"
    QTRY_COMPARE(outcome.successes, 1);
    QCOMPARE(m_log->lines().first(), "Submit Url: " + origin() + "/echo");
    QCOMPARE(m_local->requestsFor("/echo").size(), 1);
}

// The fault suite covers bodies that are not JSON, wrong content types and the rest; these are the
// answers it does not make.
void TestRequests::failedAnswersHandTheBodyTextToFailure_data()
{
    QTest::addColumn<QByteArray>("verb");
    QTest::addColumn<bvtsim::Fault>("fault");
    QTest::addColumn<QString>("text");

    bvtsim::Fault notFound;
    notFound.status = 404;
    notFound.body = "no such thing";
    bvtsim::Fault dropped;
    dropped.dropConnection = true;
    bvtsim::Fault empty;
    empty.status = 200;
    empty.body = "";

    for (const QByteArray verb : {"GET", "POST", "PATCH"}) {
        QTest::addRow("%s 404 with text", verb.constData()) << verb << notFound << "no such thing";
        QTest::addRow("%s dropped", verb.constData()) << verb << dropped << QString();
        QTest::addRow("%s empty 200", verb.constData()) << verb << empty << QString("");
    }
}

void TestRequests::failedAnswersHandTheBodyTextToFailure()
{
    QFETCH(QByteArray, verb);
    QFETCH(bvtsim::Fault, fault);
    QFETCH(QString, text);

    m_local->service().setFault(verb, "/echo", fault);
    auto manager = newManager();
    Outcome outcome;
    call(manager, verb, "/echo", {}, outcome);
    QTRY_COMPARE(outcome.failures, 1);
    QTest::qWait(50); // room for a wrongly repeated callback
    QCOMPARE(outcome.failures, 1);
    QCOMPARE(outcome.successes, 0);
    QCOMPARE(outcome.text.isNull(), text.isNull());
    QCOMPARE(outcome.text, text);

    const QStringList fails =
            m_log->linesStartingWith(verb == "POST" ? "Post Fail: " : "Patch Fail: ");
    QCOMPARE(fails.size(), verb == "GET" ? 0 : 1);
    QVERIFY(m_log->linesStartingWith("Post Success").isEmpty());
    QVERIFY(m_log->linesStartingWith("Patch Success").isEmpty());
}

void TestRequests::bearerIsReadWhenTheRequestGoesOut()
{
    // If the token answer held no token, the request still goes out, naming nil.
    bvtsim::Fault noToken;
    noToken.status = 200;
    noToken.body = R"({"created_at":0,"expires_in":0})";
    m_local->service().setFault("POST", "/oauth/token", noToken);
    auto manager = newManager();
    Outcome outcome;
    call(manager, "GET", "/echo", {}, outcome);
    QTRY_COMPARE(outcome.successes + outcome.failures, 1);
    QCOMPARE(m_local->requestsFor("/echo").first().header("Authorization"),
             QByteArray("Bearer (null)"));
}

void TestRequests::requestKeepsItsManagerAlive()
{
    Outcome outcome;
    std::weak_ptr<BVTManager> watch;
    {
        auto manager = newManager();
        watch = manager;
        call(manager, "PATCH", "/echo", {{"k", "v"}}, outcome);
    }
    QVERIFY(!watch.expired());
    QTRY_COMPARE(outcome.successes, 1);
    QCOMPARE(outcome.response.toMap().value("form").toMap().value("k").toString(), "v");
    QTRY_VERIFY(watch.expired());
}

void TestRequests::connectionsAreShared()
{
    // A manager of its own, so that no connection of an earlier test is in its pool.
    bvtsim::LoopbackRouter fresh(QUrl(origin()), m_local->service().baseUrl());
    bvt::setNetworkAccessManager(&fresh);
    auto manager = newManager();
    Outcome outcome;
    for (int i = 0; i < 10; ++i) {
        call(manager, i % 2 ? "POST" : "GET", "/echo", {}, outcome);
        QTRY_COMPARE(outcome.successes, i + 1);
    }
    QSet<int> connections;
    for (const bvtsim::RecordedRequest &request : m_local->service().requests())
        connections.insert(request.connection);
    QCOMPARE(connections.size(), 1);
}
