#include "tst_accesstoken.h"

#include "core/clock.h"

#include <Brevanti/BVTManager.h>

#include <QTcpServer>
#include <QTest>

namespace {

const QDateTime someInstant = QDateTime(QDate(2026, 3, 14), QTime(9, 26, 53), Qt::UTC);

std::shared_ptr<BVTManager> newManager(const QString &id = LocalService::clientId,
                                       const QString &secret = LocalService::clientSecret)
{
    auto manager = BVTManager::initWithLaunchOptions({}, id, secret);
    LogCapture::clear(); // "Initializing device: …" is checked elsewhere
    return manager;
}

struct Outcome
{
    int successes = 0;
    int failures = 0;
    QVariant message;
    BVTError error;
};

void verify(const std::shared_ptr<BVTManager> &manager, Outcome &outcome)
{
    manager->verifyAuthenticated(
            [&outcome](const QVariant &message) {
                ++outcome.successes;
                outcome.message = message;
            },
            [&outcome](const BVTError &error) {
                ++outcome.failures;
                outcome.error = error;
            });
}

QString messageOf(const Outcome &outcome)
{
    return outcome.message.toMap().value(QStringLiteral("message")).toString();
}

} // namespace

void TestAccessToken::initTestCase()
{
    m_local = std::make_unique<LocalService>();
}

void TestAccessToken::init()
{
    m_local->reset();
    m_log = std::make_unique<LogCapture>();
}

void TestAccessToken::cleanup()
{
    m_log.reset();
    bvt::clock::setFixedNow(QDateTime());
}

void TestAccessToken::cachedTokenIsUsedOnlyWhileStrictlyInTheFuture_data()
{
    QTest::addColumn<QDateTime>("expires");
    QTest::addColumn<bool>("fetches");

    QTest::newRow("no token") << QDateTime() << true;
    QTest::newRow("expired a second ago") << someInstant.addSecs(-1) << true;
    QTest::newRow("expires exactly now") << someInstant << true;
    QTest::newRow("expires a second ahead") << someInstant.addSecs(1) << false;
    QTest::newRow("expires a millisecond ahead") << someInstant.addMSecs(1) << false;
}

void TestAccessToken::cachedTokenIsUsedOnlyWhileStrictlyInTheFuture()
{
    QFETCH(QDateTime, expires);
    QFETCH(bool, fetches);

    bvt::clock::setFixedNow(someInstant);
    auto manager = newManager();
    manager->setAccess_token(QStringLiteral("cached"));
    manager->setAccess_token_expires(expires);

    Outcome outcome;
    verify(manager, outcome);
    if (!fetches) {
        // A valid token answers at once, sends nothing and logs nothing.
        QCOMPARE(outcome.successes, 1);
        QCOMPARE(messageOf(outcome), QStringLiteral("Existing access token"));
        QCOMPARE(manager->access_token(), QStringLiteral("cached"));
        QVERIFY(m_log->lines().isEmpty());
        QVERIFY(m_local->requestsFor("/oauth/token").isEmpty());
        return;
    }
    // The stale token is dropped before the request is even sent.
    QVERIFY(manager->access_token().isNull());
    QVERIFY(manager->access_token_expires().isNull());
    QCOMPARE(outcome.successes, 0);
    QTRY_COMPARE(outcome.successes, 1);
    QCOMPARE(messageOf(outcome), QStringLiteral("Updated access token"));
    QCOMPARE(m_local->requestsFor("/oauth/token").size(), 1);
    QVERIFY(!manager->access_token().isEmpty());
}

void TestAccessToken::tokenRequestCarriesTheClientCredentials()
{
    auto manager = newManager();
    Outcome outcome;
    verify(manager, outcome);
    QTRY_COMPARE(outcome.successes, 1);

    const auto requests = m_local->requestsFor("/oauth/token");
    QCOMPARE(requests.size(), 1);
    const bvtsim::RecordedRequest &request = requests.first();
    QCOMPARE(request.method, QByteArray("POST"));
    QCOMPARE(request.header("Authorization"),
             "Basic " + QByteArray("test-client:test-secret").toBase64());
    QCOMPARE(request.header("Accept"), QByteArray("application/json"));
    QCOMPARE(request.header("Content-Type"), QByteArray("application/x-www-form-urlencoded"));
    QCOMPARE(request.body, QByteArray("grant_type=client_credentials&scope=brevanti-sdk"));
}

void TestAccessToken::expiryRestsOnTheServiceIssueTime()
{
    // The device clock is far from the service's: only the service's issue time counts.
    m_local->service().setClock(QDateTime::fromSecsSinceEpoch(1000, Qt::UTC));
    m_local->service().setTokenLifetime(7200);
    bvt::clock::setFixedNow(QDateTime::fromSecsSinceEpoch(5000, Qt::UTC));
    auto manager = newManager();
    Outcome outcome;
    verify(manager, outcome);
    QTRY_COMPARE(outcome.successes, 1);

    QCOMPARE(manager->access_token_expires(), QDateTime::fromSecsSinceEpoch(8200, Qt::UTC));
    QCOMPARE(m_log->lines(),
             QStringList({QStringLiteral("self.access_token: ") + manager->access_token(),
                          QStringLiteral("self.access_token_expires: 1970-01-01 02:16:40 +0000")}));
}

void TestAccessToken::tokenAnswerIsReadWithoutValidation_data()
{
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<QString>("token");
    QTest::addColumn<qint64>("expiresSecs");

    QTest::newRow("numbers") << QByteArray(
            R"({"access_token":"t1","created_at":1000,"expires_in":7200})")
                             << "t1" << qint64(8200);
    QTest::newRow("numeric text") << QByteArray(
            R"({"access_token":"t2","created_at":"1000","expires_in":" 7200s"})")
                                  << "t2" << qint64(8200);
    QTest::newRow("fractions are cut")
            << QByteArray(R"({"access_token":"t3","created_at":1000.9,"expires_in":-0.5})") << "t3"
            << qint64(1000);
    QTest::newRow("members missing") << QByteArray("{}") << QString() << qint64(0);
    QTest::newRow("wrong types") << QByteArray(
            R"({"access_token":null,"created_at":[1],"expires_in":{"a":1}})")
                                 << QString() << qint64(0);
    QTest::newRow("token as a number")
            << QByteArray(R"({"access_token":42,"created_at":true,"expires_in":"x"})") << "42"
            << qint64(1);
    QTest::newRow("beyond 32 bits is clamped")
            << QByteArray(R"({"access_token":"t4","created_at":1e12,"expires_in":"99999999999"})")
            << "t4" << qint64(2) * std::numeric_limits<qint32>::max();
    QTest::newRow("an array") << QByteArray("[1,2]") << QString() << qint64(0);
}

void TestAccessToken::tokenAnswerIsReadWithoutValidation()
{
    QFETCH(QByteArray, answer);
    QFETCH(QString, token);
    QFETCH(qint64, expiresSecs);

    bvtsim::Fault fault;
    fault.status = 200;
    fault.body = answer;
    m_local->service().setFault("POST", "/oauth/token", fault);
    auto manager = newManager();
    Outcome outcome;
    verify(manager, outcome);
    QTRY_COMPARE(outcome.successes, 1);

    QCOMPARE(manager->access_token(), token);
    QCOMPARE(manager->access_token_expires(), QDateTime::fromSecsSinceEpoch(expiresSecs, Qt::UTC));
    QCOMPARE(m_log->lines().value(0),
             QStringLiteral("self.access_token: ") + (token.isNull() ? "(null)" : token));
}

void TestAccessToken::everyCallWithoutTokenSendsItsOwnTokenRequest()
{
    auto manager = newManager();
    Outcome first;
    Outcome second;
    verify(manager, first);
    verify(manager, second);
    QTRY_COMPARE(first.successes + second.successes, 2);
    QCOMPARE(m_local->requestsFor("/oauth/token").size(), 2);
    QCOMPARE(first.failures + second.failures, 0);
}

void TestAccessToken::failedTokenRequestCallsFailureOnceAndLogsNothing_data()
{
    QTest::addColumn<QString>("clientSecret");
    QTest::addColumn<bvtsim::Fault>("fault");
    QTest::addColumn<int>("code");

    bvtsim::Fault none;
    QTest::newRow("wrong secret") << "wrong" << none << 401;

    bvtsim::Fault html;
    html.status = 503;
    html.body = "<html>down</html>";
    html.contentType = "text/html";
    QTest::newRow("5xx with html") << LocalService::clientSecret << html << 503;

    bvtsim::Fault notJson;
    notJson.status = 200;
    notJson.body = "access_token=abc";
    QTest::newRow("200 not json") << LocalService::clientSecret << notJson << 200;

    bvtsim::Fault wrongType;
    wrongType.contentType = "text/plain";
    QTest::newRow("wrong content type") << LocalService::clientSecret << wrongType << 200;

    bvtsim::Fault dropped;
    dropped.dropConnection = true;
    QTest::newRow("dropped") << LocalService::clientSecret << dropped
                             << int(QNetworkReply::RemoteHostClosedError);

    bvtsim::Fault truncated;
    truncated.truncateBody = true;
    QTest::newRow("truncated") << LocalService::clientSecret << truncated
                               << int(QNetworkReply::RemoteHostClosedError);
}

void TestAccessToken::failedTokenRequestCallsFailureOnceAndLogsNothing()
{
    QFETCH(QString, clientSecret);
    QFETCH(bvtsim::Fault, fault);
    QFETCH(int, code);

    m_local->service().setFault("POST", "/oauth/token", fault);
    auto manager = newManager(LocalService::clientId, clientSecret);
    Outcome outcome;
    verify(manager, outcome);
    QTRY_COMPARE(outcome.failures, 1);
    QTest::qWait(50); // room for a wrongly repeated callback
    QCOMPARE(outcome.failures, 1);
    QCOMPARE(outcome.successes, 0);
    QCOMPARE(outcome.error.code, code);
    QVERIFY(!outcome.error.message.isEmpty());
    QVERIFY(m_log->lines().isEmpty());
    QVERIFY(manager->access_token().isNull());
    QVERIFY(manager->access_token_expires().isNull());
}
