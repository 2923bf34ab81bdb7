#include "localservice.h"
#include "outcomes.h"

#include "client/formencoder.h"
#include "client/jsonresponse.h"
#include "client/origin.h"
#include "client/tokenresponse.h"
#include "core/clock.h"
#include "core/userdefaults.h"

#include <Brevanti/BVT.h>

#include <QtTest>

const QDateTime someInstant = QDateTime(QDate(2026, 3, 14), QTime(9, 26, 53), Qt::UTC);

// The service client: the token, the requests' bytes and log lines, the form encoding and how
// answers are judged. Faults of the network and the service are the fault suite's.
class TestClient : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase()
    {
        QStandardPaths::setTestModeEnabled(true);
        // A device registered before, so that each new manager leaves the service alone.
        bvt::UserDefaults::standardUserDefaults().setObject("registered-device",
                                                            "com.brevanti.ios.BVTDeviceId");
        m_local = std::make_unique<LocalService>();
        m_log = std::make_unique<LogCapture>();
    }

    void init()
    {
        m_local->reset();
        LogCapture::clear();
    }

    void cleanup()
    {
        bvt::clock::setFixedNow({});
        m_local->routeLibraryHere();
    }

    void formEncoding_data()
    {
        QTest::addColumn<BVTParameters>("parameters");
        QTest::addColumn<QByteArray>("encoded");
        const auto row = [](const char *name, const BVTParameters &parameters,
                            const char *encoded) {
            QTest::newRow(name) << parameters << QByteArray(encoded);
        };
        row("keys in ascending order", {{"scope", "s"}, {"b", "2"}, {"B", "3"}, {"a", "1"}},
            "B=3&a=1&b=2&scope=s");
        row("nesting, numbers",
            {{"user", BVTParameters{{"n", 42}, {"f", 1.5}}},
             {"a", BVTParameters{{"b", BVTParameters{{"c", "d"}}}}}},
            "a[b][c]=d&user[f]=1.5&user[n]=42");
        row("arrays", {{"ids", QVariantList{"3", "1", "2"}}, {"x", "y"}},
            "ids[]=3&ids[]=1&ids[]=2&x=y");
        row("reserved characters, and the ones left as they are",
            {{"q", "a b&c=d+e;f,g:h@i#j$k!l'm(n)o*p[q]r%s"}, {"r", "a/b?c-d.e_f~g"}},
            "q=a%20b%26c%3Dd%2Be%3Bf%2Cg%3Ah%40i%23j%24k%21l%27m%28n%29o%2Ap%5Bq%5Dr%25s"
            "&r=a/b?c-d.e_f~g");
        row("non-ascii", {{"näme", "Grüße 東京 🎉"}},
            "n%C3%A4me=Gr%C3%BC%C3%9Fe%20%E6%9D%B1%E4%BA%AC%20%F0%9F%8E%89");
        row("brackets inside a key are data", {{"a[b]", BVTParameters{{"c]", "1"}}}},
            "a%5Bb%5D[c%5D]=1");
        row("empty and null values",
            {{"empty", ""}, {"none", QVariant()}, {"null", QVariant::fromValue(nullptr)}},
            "empty=&none&null");
    }

    void formEncoding()
    {
        QFETCH(BVTParameters, parameters);
        QTEST(bvt::FormEncoder::encode(parameters), "encoded");
    }

    void answersAreJudged_data()
    {
        QTest::addColumn<int>("status");
        QTest::addColumn<QByteArray>("contentType");
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<bool>("accepted");
        QTest::addColumn<QString>("text"); // the failure text
        const auto row = [](const char *name, int status, const char *type, const char *body,
                            const char *text) {
            QTest::newRow(name) << status << QByteArray(type) << QByteArray(body) << !text
                                << QString::fromUtf8(text);
        };
        const char *json = "application/json";
        row("200 object", 200, json, R"({"a":1})", nullptr);
        row("299 array", 299, json, "[1]", nullptr);
        row("text/json", 201, "text/json", "[]", nullptr);
        row("text/javascript, charset", 200, "text/javascript; charset=utf-8", "{}", nullptr);
        row("199", 199, json, "{}", "{}");
        row("300", 300, json, "{}", "{}");
        row("text/plain, bare charset", 200, "text/plain; charset=ISO-8859-1", "\"caf\xe9\"",
            "\"caf\xc3\xa9\"");
        row("no content type", 200, nullptr, "{}", "{}");
        row("empty 200", 200, json, "", "");
        row("a bare number", 200, json, "42", "42");
        // The failure text is read in the charset the answer names.
        row("404, quoted latin-1", 404, R"(application/json; Charset="ISO-8859-1")", "\"caf\xe9\"",
            "\"caf\xc3\xa9\"");
        QTest::newRow("no answer") << 0 << QByteArray() << QByteArray() << false << QString();
    }

    void answersAreJudged()
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
        QVERIFY(response.error.message.startsWith(status == 0 ? "refused" : "Request failed: "));
    }

    void tokenAnswerIsReadWithoutValidation_data()
    {
        QTest::addColumn<QByteArray>("answer");
        QTest::addColumn<QString>("token");
        QTest::addColumn<qint64>("expiresSecs");
        const auto row = [](const char *name, const char *answer, const char *token,
                            qint64 expires) {
            QTest::newRow(name) << QByteArray(answer) << QString::fromUtf8(token) << expires;
        };
        row("numbers", R"({"access_token":"t1","created_at":1000,"expires_in":7200})", "t1", 8200);
        row("numeric text", R"({"access_token":"t2","created_at":"1000","expires_in":" 7200s"})",
            "t2", 8200);
        row("fractions are cut", R"({"access_token":"t3","created_at":1000.9,"expires_in":-0.5})",
            "t3", 1000);
        row("wrong types", R"({"access_token":null,"created_at":[1],"expires_in":{"a":1}})",
            nullptr, 0);
        row("token as a number", R"({"access_token":42,"created_at":true,"expires_in":"x"})", "42",
            1);
        row("beyond 32 bits is clamped",
            R"({"access_token":"t4","created_at":1e12,"expires_in":"99999999999"})", "t4",
            qint64(2) * std::numeric_limits<qint32>::max());
    }

    void tokenAnswerIsReadWithoutValidation()
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

    void tokenIsKeptOnlyWhileStrictlyInTheFuture_data()
    {
        QTest::addColumn<QDateTime>("expires"); // of the token held before the call
        QTest::addColumn<QString>("clientSecret");
        QTest::addColumn<bvtsim::Fault>("fault");
        QTest::addColumn<int>("code"); // of the failure; 0 when a token is had

        const QString secret = LocalService::clientSecret;
        QTest::newRow("no token") << QDateTime() << secret << bvtsim::Fault() << 0;
        QTest::newRow("expires exactly now") << someInstant << secret << bvtsim::Fault() << 0;
        QTest::newRow("expires a millisecond ahead")
                << someInstant.addMSecs(1) << secret << bvtsim::Fault() << 0;
        QTest::newRow("wrong secret") << QDateTime() << "wrong" << bvtsim::Fault() << 401;
        QTest::newRow("dropped") << QDateTime() << secret << bvtsim::Fault::drop()
                                 << int(QNetworkReply::RemoteHostClosedError);
    }

    void tokenIsKeptOnlyWhileStrictlyInTheFuture()
    {
        QFETCH(QDateTime, expires);
        QFETCH(QString, clientSecret);
        QFETCH(bvtsim::Fault, fault);
        QFETCH(int, code);

        bvt::clock::setFixedNow(someInstant);
        m_local->service().setFault("POST", "/oauth/token", fault);
        auto manager = newManager(LocalService::clientId, clientSecret);
        manager->setAccess_token(QStringLiteral("cached"));
        manager->setAccess_token_expires(expires);
        const bool fetches = !expires.isValid() || expires <= someInstant;

        Outcomes outcomes;
        manager->verifyAuthenticated(outcomes.success(), outcomes.error());
        // A stale token is dropped before the request is even sent.
        QCOMPARE(manager->access_token().isNull(), fetches);
        QCOMPARE(outcomes.count(), fetches ? 0 : 1);
        QCOMPARE(m_local->settledExchanges(), fetches ? 1 : 0);
        QCOMPARE(outcomes.count(), 1);
        QCOMPARE(m_local->requestsFor("/oauth/token").size(), fetches ? 1 : 0);
        if (code != 0) { // once, and nothing is logged or kept
            QCOMPARE(outcomes.errors.size(), 1);
            QCOMPARE(outcomes.errors.first().code, code);
            QVERIFY(!outcomes.errors.first().message.isEmpty());
            QVERIFY(m_log->lines().isEmpty());
            QVERIFY(manager->access_token().isNull());
            QVERIFY(manager->access_token_expires().isNull());
            return;
        }
        QCOMPARE(outcomes.answers.value(0).toMap().value("message").toString(),
                 fetches ? "Updated access token" : "Existing access token");
        QCOMPARE(manager->access_token() == "cached", !fetches);
        QCOMPARE(m_log->lines().isEmpty(), !fetches); // a valid token logs nothing
    }

    void everyCallWithoutTokenFetchesOneOnTheServiceClock()
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
        const QString expires =
                QStringLiteral("self.access_token_expires: 1970-01-01 02:16:40 +0000");
        // Each fetch writes its token and expiry.
        QCOMPARE(m_log->lines().mid(1),
                 QStringList({expires, "self.access_token: " + manager->access_token(), expires}));
    }

    void eachVerbSendsItsBytesAndLogLines_data()
    {
        QTest::addColumn<QByteArray>("verb");
        QTest::addColumn<QByteArray>("contentType");
        QTest::addColumn<QString>("path"); // joined to the origin as it stands
        QTest::addColumn<QByteArray>("query");
        QTest::addColumn<QString>("result"); // the success line's start; empty when there is none

        const QByteArray form = "application/x-www-form-urlencoded";
        QTest::newRow("GET, a path with a query")
                << QByteArray("GET") << QByteArray("application/json;") << "/echo?page=2"
                << QByteArray("page=2&a=1&b=x%20y") << QString();
        QTest::newRow("POST") << QByteArray("POST") << form << "/echo" << QByteArray()
                              << "Post Success: ";
        QTest::newRow("PATCH") << QByteArray("PATCH") << form << "/echo" << QByteArray()
                               << "Patch Success: ";
    }

    void eachVerbSendsItsBytesAndLogLines()
    {
        QFETCH(QByteArray, verb);
        QFETCH(QString, path);
        QFETCH(QByteArray, query);
        QFETCH(QString, result);

        auto manager = newManager();
        Outcomes outcomes;
        call(manager, verb, path, {{"a", "1"}, {"b", "x y"}}, outcomes);
        QStringList expected{"Submit Url: " + bvt::serviceOrigin() + path};
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
        QTEST(request.header("Content-Type"), "contentType");
        QCOMPARE(request.query, query);
        QCOMPARE(request.body, query.isEmpty() ? QByteArray("a=1&b=x%20y") : QByteArray());

        expected << "self.access_token: " + manager->access_token()
                 << "self.access_token_expires: "
                        + manager->access_token_expires().toString("yyyy-MM-dd HH:mm:ss +0000");
        if (!result.isEmpty())
            expected << result
                            + QJsonDocument::fromVariant(outcomes.answers.first())
                                      .toJson(QJsonDocument::Compact);
        QCOMPARE(m_log->lines(), expected);
    }

    // The request holds its manager until it ends, and reads the token only when it goes out: if
    // the token answer held none, it still goes, naming nil.
    void requestKeepsItsManagerAndReadsTheBearerWhenItGoesOut()
    {
        m_local->service().setFault(
                "POST", "/oauth/token",
                bvtsim::Fault::answer(200, R"({"created_at":0,"expires_in":0})"));
        Outcomes outcomes;
        std::weak_ptr<BVTManager> watch;
        {
            auto manager = newManager();
            watch = manager;
            call(manager, "PATCH", "/echo", {{"k", "v"}}, outcomes);
        }
        QVERIFY(!watch.expired());
        QCOMPARE(m_local->settledExchanges(), 2);
        QCOMPARE(outcomes.count(), 1);
        QCOMPARE(m_log->lines().value(1), "self.access_token: (null)");
        const bvtsim::RecordedRequest request = m_local->requestsFor("/echo").value(0);
        QVERIFY(request.body == "k=v" && request.header("Authorization") == "Bearer (null)");
        QTRY_VERIFY(watch.expired());
    }

private:
    std::unique_ptr<LocalService> m_local;
    std::unique_ptr<LogCapture> m_log;
};

QTEST_GUILESS_MAIN(TestClient)

#include "tst_client.moc"
