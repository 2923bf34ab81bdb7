#include "localservice.h"
#include "logcapture.h"
#include "outcomes.h"

#include "client/formencoder.h"
#include "client/jsonresponse.h"
#include "client/origin.h"
#include "client/tokenresponse.h"
#include "core/clock.h"
#include "core/userdefaults.h"

#include <Brevanti/BVT.h>

#include <QJsonDocument>
#include <QStandardPaths>
#include <QTest>

namespace {

const QDateTime someInstant = QDateTime(QDate(2026, 3, 14), QTime(9, 26, 53), Qt::UTC);

QString messageOf(const Outcomes &outcomes)
{
    return outcomes.answers.value(0).toMap().value(QStringLiteral("message")).toString();
}

} // namespace

// The service client: the token, the requests' bytes and log lines, the form encoding and how
// answers are judged. Faults of the network and the service are the fault suite's.
class TestClient : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void formEncoding_data();
    void formEncoding();
    void answersAreJudged_data();
    void answersAreJudged();
    void tokenAnswerIsReadWithoutValidation_data();
    void tokenAnswerIsReadWithoutValidation();

    void cachedTokenIsUsedOnlyWhileStrictlyInTheFuture_data();
    void cachedTokenIsUsedOnlyWhileStrictlyInTheFuture();
    void everyCallWithoutTokenFetchesOneOnTheServiceClock();
    void failedTokenRequestCallsFailureOnceAndLogsNothing_data();
    void failedTokenRequestCallsFailureOnceAndLogsNothing();

    void eachVerbSendsItsBytesAndLogLines_data();
    void eachVerbSendsItsBytesAndLogLines();
    void urlIsJoinedAsItStands_data();
    void urlIsJoinedAsItStands();
    void bearerIsReadWhenTheRequestGoesOut();
    void requestKeepsItsManagerAlive();
    void connectionsAreShared();

private:
    std::unique_ptr<LocalService> m_local;
    std::unique_ptr<LogCapture> m_log;
};

void TestClient::initTestCase()
{
    m_local = std::make_unique<LocalService>();
}

void TestClient::init()
{
    m_local->reset();
    m_log = std::make_unique<LogCapture>();
}

void TestClient::cleanup()
{
    m_log.reset();
    bvt::clock::setFixedNow({});
    m_local->routeLibraryHere();
}

void TestClient::formEncoding_data()
{
    QTest::addColumn<BVTParameters>("parameters");
    QTest::addColumn<QByteArray>("encoded");

    QTest::newRow("nothing") << BVTParameters() << QByteArray();
    QTest::newRow("keys in ascending order")
            << BVTParameters{{"scope", "s"}, {"b", "2"}, {"B", "3"}, {"a", "1"}}
            << QByteArray("B=3&a=1&b=2&scope=s");
    QTest::newRow("nesting") << BVTParameters{{"user", BVTParameters{{"identifier", "u-1"}}},
                                              {"device",
                                               BVTParameters{{"uuid", "d-1"}, {"os", "ios"}}}}
                             << QByteArray("device[os]=ios&device[uuid]=d-1&user[identifier]=u-1");
    QTest::newRow("deep nesting")
            << BVTParameters{{"a", BVTParameters{{"b", BVTParameters{{"c", "d"}}}}}}
            << QByteArray("a[b][c]=d");
    QTest::newRow("arrays") << BVTParameters{{"ids", QVariantList{"3", "1", "2"}}, {"x", "y"}}
                            << QByteArray("ids[]=3&ids[]=1&ids[]=2&x=y");
    QTest::newRow("reserved characters")
            << BVTParameters{{"q", "a b&c=d+e;f,g:h@i#j$k!l'm(n)o*p[q]r%s"}}
            << QByteArray("q=a%20b%26c%3Dd%2Be%3Bf%2Cg%3Ah%40i%23j%24k%21l%27m%28n%29o%2Ap%5Bq%5Dr%"
                          "25s");
    QTest::newRow("left as they are")
            << BVTParameters{{"path", "a/b?c-d.e_f~g"}} << QByteArray("path=a/b?c-d.e_f~g");
    QTest::newRow("non-ascii")
            << BVTParameters{{"näme", "Grüße 東京 🎉"}}
            << QByteArray("n%C3%A4me=Gr%C3%BC%C3%9Fe%20%E6%9D%B1%E4%BA%AC%20%F0%9F%8E%89");
    QTest::newRow("brackets inside a key are data")
            << BVTParameters{{"a[b]", BVTParameters{{"c]", "1"}}}}
            << QByteArray("a%5Bb%5D[c%5D]=1");
    QTest::newRow("empty and null values")
            << BVTParameters{{"empty", ""}, {"none", QVariant()}} << QByteArray("empty=&none");
    QTest::newRow("numbers") << BVTParameters{{"n", 42}, {"f", 1.5}} << QByteArray("f=1.5&n=42");
}

void TestClient::formEncoding()
{
    QFETCH(BVTParameters, parameters);
    QFETCH(QByteArray, encoded);
    QCOMPARE(bvt::FormEncoder::encode(parameters), encoded);
}

void TestClient::answersAreJudged_data()
{
    QTest::addColumn<int>("status");
    QTest::addColumn<QByteArray>("contentType");
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<bool>("accepted");
    QTest::addColumn<QString>("text"); // the failure text

    const QByteArray json = "application/json";
    QTest::newRow("200 object") << 200 << json << QByteArray(R"({"a":1})") << true << QString();
    QTest::newRow("299 array") << 299 << json << QByteArray("[1]") << true << QString();
    QTest::newRow("text/json") << 201 << QByteArray("text/json") << QByteArray("[]") << true
                               << QString();
    QTest::newRow("text/javascript, charset") << 200 << QByteArray("text/javascript; charset=utf-8")
                                              << QByteArray("{}") << true << QString();
    QTest::newRow("404 with JSON") << 404 << json << QByteArray(R"({"error":"not_found"})") << false
                                   << R"({"error":"not_found"})";
    QTest::newRow("199") << 199 << json << QByteArray("{}") << false << "{}";
    QTest::newRow("300") << 300 << json << QByteArray("{}") << false << "{}";
    QTest::newRow("text/plain") << 200 << QByteArray("text/plain") << QByteArray("{}") << false
                                << "{}";
    QTest::newRow("no content type") << 200 << QByteArray() << QByteArray("{}") << false << "{}";
    QTest::newRow("empty 200") << 200 << json << QByteArray("") << false << "";
    QTest::newRow("a bare number") << 200 << json << QByteArray("42") << false << "42";
    // The failure text is read in the charset the answer names.
    QTest::newRow("404, quoted latin-1")
            << 404 << QByteArray(R"(application/json; Charset="ISO-8859-1")")
            << QByteArray("\"caf\xe9\"") << false << QStringLiteral("\"café\"");
    QTest::newRow("no answer") << 0 << QByteArray() << QByteArray() << false << QString();
}

void TestClient::answersAreJudged()
{
    QFETCH(int, status);
    QFETCH(QByteArray, contentType);
    QFETCH(QByteArray, body);
    QFETCH(bool, accepted);
    QFETCH(QString, text);

    const int error = status == 0 ? int(QNetworkReply::ConnectionRefusedError) : 0;
    const bvt::JsonResponse response =
            bvt::JsonResponse::judge(status, contentType, body, error, error ? "refused" : "");
    QCOMPARE(response.accepted, accepted);
    if (accepted) {
        QCOMPARE(response.object, QJsonDocument::fromJson(body).toVariant());
        return;
    }
    QCOMPARE(response.text, text);
    QCOMPARE(response.text.isNull(), text.isNull());
    QCOMPARE(response.error.code, status == 0 ? error : status);
    QVERIFY(!response.error.message.isEmpty());
}

void TestClient::tokenAnswerIsReadWithoutValidation_data()
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

void TestClient::tokenAnswerIsReadWithoutValidation()
{
    QFETCH(QByteArray, answer);
    QFETCH(QString, token);
    QFETCH(qint64, expiresSecs);

    const bvt::TokenResponse read =
            bvt::TokenResponse::read(QJsonDocument::fromJson(answer).toVariant());
    QCOMPARE(read.accessToken, token);
    QCOMPARE(read.accessToken.isNull(), token.isNull());
    QCOMPARE(read.expires, QDateTime::fromSecsSinceEpoch(expiresSecs, Qt::UTC));
}

void TestClient::cachedTokenIsUsedOnlyWhileStrictlyInTheFuture_data()
{
    QTest::addColumn<QDateTime>("expires");
    QTest::addColumn<bool>("fetches");

    QTest::newRow("no token") << QDateTime() << true;
    QTest::newRow("expires exactly now") << someInstant << true;
    QTest::newRow("expires a millisecond ahead") << someInstant.addMSecs(1) << false;
}

void TestClient::cachedTokenIsUsedOnlyWhileStrictlyInTheFuture()
{
    QFETCH(QDateTime, expires);
    QFETCH(bool, fetches);

    bvt::clock::setFixedNow(someInstant);
    auto manager = newManager();
    manager->setAccess_token(QStringLiteral("cached"));
    manager->setAccess_token_expires(expires);

    Outcomes outcomes;
    manager->verifyAuthenticated(outcomes.success(), outcomes.error());
    if (!fetches) {
        // A valid token answers at once, sends nothing and logs nothing.
        QCOMPARE(outcomes.answers.size(), 1);
        QCOMPARE(messageOf(outcomes), QStringLiteral("Existing access token"));
        QCOMPARE(manager->access_token(), QStringLiteral("cached"));
        QVERIFY(m_log->lines().isEmpty());
        QCOMPARE(m_local->service().requests().size(), 0);
        return;
    }
    // The stale token is dropped before the request is even sent.
    QVERIFY(manager->access_token().isNull());
    QVERIFY(manager->access_token_expires().isNull());
    QCOMPARE(outcomes.count(), 0);
    QCOMPARE(m_local->settledExchanges(), 1);
    QCOMPARE(outcomes.answers.size(), 1);
    QCOMPARE(messageOf(outcomes), QStringLiteral("Updated access token"));
    QCOMPARE(m_local->requestsFor("/oauth/token").size(), 1);
    QVERIFY(!manager->access_token().isEmpty());
}

void TestClient::everyCallWithoutTokenFetchesOneOnTheServiceClock()
{
    // The device clock is far from the service's: only the service's issue time counts.
    m_local->service().setClock(QDateTime::fromSecsSinceEpoch(1000, Qt::UTC));
    m_local->service().setTokenLifetime(7200);
    bvt::clock::setFixedNow(QDateTime::fromSecsSinceEpoch(5000, Qt::UTC));
    auto manager = newManager();
    Outcomes outcomes;
    manager->verifyAuthenticated(outcomes.success(), outcomes.error());
    manager->verifyAuthenticated(outcomes.success(), outcomes.error());
    QCOMPARE(m_local->settledExchanges(), 2);
    QCOMPARE(outcomes.answers.size(), 2);

    const auto requests = m_local->requestsFor("/oauth/token");
    QCOMPARE(requests.size(), 2);
    const bvtsim::RecordedRequest &request = requests.first();
    QCOMPARE(request.method, QByteArray("POST"));
    QCOMPARE(request.header("Authorization"),
             "Basic " + QByteArray("test-client:test-secret").toBase64());
    QCOMPARE(request.header("Accept"), QByteArray("application/json"));
    QCOMPARE(request.header("Content-Type"), QByteArray("application/x-www-form-urlencoded"));
    QCOMPARE(request.body, QByteArray("grant_type=client_credentials&scope=brevanti-sdk"));

    QCOMPARE(manager->access_token_expires(), QDateTime::fromSecsSinceEpoch(8200, Qt::UTC));
    const QString expires = QStringLiteral("self.access_token_expires: 1970-01-01 02:16:40 +0000");
    const QStringList lines = m_log->lines();
    QCOMPARE(lines.size(), 4); // each fetch writes its token and expiry
    QCOMPARE(lines.mid(2), QStringList({"self.access_token: " + manager->access_token(), expires}));
    QCOMPARE(lines.at(1), expires);
}

void TestClient::failedTokenRequestCallsFailureOnceAndLogsNothing_data()
{
    QTest::addColumn<QString>("clientSecret");
    QTest::addColumn<bvtsim::Fault>("fault");
    QTest::addColumn<int>("code");

    QTest::newRow("wrong secret") << "wrong" << bvtsim::Fault() << 401;
    bvtsim::Fault dropped;
    dropped.dropConnection = true;
    QTest::newRow("dropped") << LocalService::clientSecret << dropped
                             << int(QNetworkReply::RemoteHostClosedError);
}

void TestClient::failedTokenRequestCallsFailureOnceAndLogsNothing()
{
    QFETCH(QString, clientSecret);
    QFETCH(bvtsim::Fault, fault);
    QFETCH(int, code);

    m_local->service().setFault("POST", "/oauth/token", fault);
    auto manager = newManager(LocalService::clientId, clientSecret);
    Outcomes outcomes;
    manager->verifyAuthenticated(outcomes.success(), outcomes.error());
    QCOMPARE(m_local->settledExchanges(), 1);
    QCOMPARE(outcomes.count(), 1);
    QCOMPARE(outcomes.errors.size(), 1);
    QCOMPARE(outcomes.errors.first().code, code);
    QVERIFY(!outcomes.errors.first().message.isEmpty());
    QVERIFY(m_log->lines().isEmpty());
    QVERIFY(manager->access_token().isNull());
    QVERIFY(manager->access_token_expires().isNull());
}

void TestClient::eachVerbSendsItsBytesAndLogLines_data()
{
    QTest::addColumn<QByteArray>("verb");
    QTest::addColumn<QByteArray>("contentType");
    QTest::addColumn<bool>("inQuery");
    QTest::addColumn<QString>("result"); // the success line's start; empty when there is none

    const QByteArray form = "application/x-www-form-urlencoded";
    QTest::newRow("GET") << QByteArray("GET") << QByteArray("application/json;") << true
                         << QString();
    QTest::newRow("POST") << QByteArray("POST") << form << false << "Post Success: ";
    QTest::newRow("PATCH") << QByteArray("PATCH") << form << false << "Patch Success: ";
}

void TestClient::eachVerbSendsItsBytesAndLogLines()
{
    QFETCH(QByteArray, verb);
    QFETCH(QByteArray, contentType);
    QFETCH(bool, inQuery);
    QFETCH(QString, result);

    auto manager = newManager();
    Outcomes outcomes;
    call(manager, verb, "/echo", {{"a", "1"}, {"b", "x y"}}, outcomes);
    QStringList expected{"Submit Url: " + bvt::serviceOrigin() + "/echo"};
    if (verb == "GET")
        expected << "Authorization: Basic " + QByteArray("test-client:test-secret").toBase64();
    QCOMPARE(m_log->lines(), expected); // written before the token check

    QCOMPARE(m_local->settledExchanges(), 2);
    QCOMPARE(outcomes.answers.size(), 1);
    const auto requests = m_local->requestsFor("/echo");
    QCOMPARE(requests.size(), 1);
    const bvtsim::RecordedRequest &request = requests.first();
    QCOMPARE(request.method, verb);
    QCOMPARE(request.header("Authorization"), "Bearer " + manager->access_token().toUtf8());
    QCOMPARE(request.header("Accept"), QByteArray("application/vnd.brevanti.com;version=1"));
    QCOMPARE(request.header("Content-Type"), contentType);
    QCOMPARE(request.query, inQuery ? QByteArray("a=1&b=x%20y") : QByteArray());
    QCOMPARE(request.body, inQuery ? QByteArray() : QByteArray("a=1&b=x%20y"));

    expected << "self.access_token: " + manager->access_token()
             << "self.access_token_expires: "
                    + manager->access_token_expires().toString("yyyy-MM-dd HH:mm:ss +0000");
    if (!result.isEmpty())
        expected << result
                        + QJsonDocument::fromVariant(outcomes.answers.first())
                                  .toJson(QJsonDocument::Compact);
    QCOMPARE(m_log->lines(), expected);
}

void TestClient::urlIsJoinedAsItStands_data()
{
    QTest::addColumn<QString>("originSuffix");
    QTest::addColumn<QString>("path");
    QTest::addColumn<QByteArray>("query");

    QTest::newRow("no leading slash") << "/ech"
                                      << "o" << QByteArray("a=1");
    QTest::newRow("a path with a query") << ""
                                         << "/echo?page=2" << QByteArray("page=2&a=1");
}

void TestClient::urlIsJoinedAsItStands()
{
    QFETCH(QString, originSuffix);
    QFETCH(QString, path);
    QFETCH(QByteArray, query);

    auto manager = newManager();
    manager->setAccess_token(QStringLiteral("held"));
    manager->setAccess_token_expires(QDateTime::currentDateTimeUtc().addDays(1));
    manager->setOrigin(bvt::serviceOrigin() + originSuffix);
    Outcomes outcomes;
    call(manager, "GET", path, {{"a", "1"}}, outcomes);
    QCOMPARE(m_log->lines().first(), "Submit Url: " + bvt::serviceOrigin() + originSuffix + path);
    QCOMPARE(m_local->settledExchanges(), 1);
    QCOMPARE(m_local->requestsFor("/echo").size(), 1);
    QCOMPARE(m_local->requestsFor("/echo").first().query, query);
}

void TestClient::bearerIsReadWhenTheRequestGoesOut()
{
    // If the token answer held no token, the request still goes out, naming nil.
    m_local->service().setFault("POST", "/oauth/token",
                                {0, 200, R"({"created_at":0,"expires_in":0})", {}});
    auto manager = newManager();
    Outcomes outcomes;
    call(manager, "GET", "/echo", {}, outcomes);
    QCOMPARE(m_local->settledExchanges(), 2);
    QCOMPARE(m_log->lines().value(2), "self.access_token: (null)");
    QCOMPARE(m_local->requestsFor("/echo").first().header("Authorization"),
             QByteArray("Bearer (null)"));
}

void TestClient::requestKeepsItsManagerAlive()
{
    Outcomes outcomes;
    std::weak_ptr<BVTManager> watch;
    {
        auto manager = newManager();
        watch = manager;
        call(manager, "PATCH", "/echo", {{"k", "v"}}, outcomes);
    }
    QVERIFY(!watch.expired());
    QCOMPARE(m_local->settledExchanges(), 2);
    QCOMPARE(outcomes.answers.size(), 1);
    QCOMPARE(outcomes.answers.first().toMap().value("form").toMap().value("k").toString(), "v");
    QTRY_VERIFY(watch.expired());
}

void TestClient::connectionsAreShared()
{
    // A manager of its own, so that no connection of an earlier test is in its pool.
    bvtsim::LoopbackRouter fresh(QUrl(bvt::serviceOrigin()), m_local->service().baseUrl());
    bvt::setNetworkAccessManager(&fresh);
    auto manager = newManager();
    Outcomes outcomes;
    for (int i = 0; i < 10; ++i) {
        call(manager, i % 2 ? "POST" : "GET", "/echo", {}, outcomes);
        QTRY_COMPARE(outcomes.count(), i + 1);
    }
    QCOMPARE(outcomes.answers.size(), 10);
    QSet<int> connections;
    for (const bvtsim::RecordedRequest &request : m_local->service().requests())
        connections.insert(request.connection);
    QCOMPARE(connections.size(), 1);
}

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    QStandardPaths::setTestModeEnabled(true);
    // A device registered before, so that each new manager leaves the service alone.
    bvt::UserDefaults::standardUserDefaults().setObject(
            QStringLiteral("registered-device"), QStringLiteral("com.brevanti.ios.BVTDeviceId"));
    TestClient test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_client.moc"
