#include "localservice.h"
#include "logcapture.h"
#include "notify/preferencedocument.h"
#include "outcomes.h"
#include "standinoperatingsystem.h"

#include <Brevanti/BVT.h>
#include <Brevanti/BVTNotify.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QSettings>
#include <QStandardPaths>
#include <QTest>

namespace {

const QJsonArray catalogue = QJsonDocument::fromJson(R"([
    {"name": "News", "key": "news", "preferences": [
        {"name": "Breaking news", "key": "breaking", "enabled": true},
        {"name": "Daily digest", "key": "digest", "enabled": false}]},
    {"name": "Orders", "key": "orders", "preferences": [
        {"name": "Shipping updates", "key": "shipping", "enabled": true}]}
])")
                                     .array();

} // namespace

class TestNotify : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void nothingIsSentWithoutADevice();
    void tokenText_data();
    void tokenText();
    void enableStoresTheTokenOnceAcceptedAndBeforeSuccess();
    void failedEnableKeepsTheEarlierToken_data();
    void failedEnableKeepsTheEarlierToken();
    void verifyLogsAKnownTokenAndNilKeysThrow();
    void changesGoToTheUserWhenAssignedAndFetchesToTheDevice();
    void everyChangeIsFollowedByOneVerify();
    void documentModelReadsTheFetchedDocument_data();
    void documentModelReadsTheFetchedDocument();

private:
    void registerDevice();

    std::unique_ptr<LocalService> m_local;
    std::unique_ptr<LogCapture> m_log;
    bvtstandin::StandInOperatingSystem m_system;
};

void TestNotify::initTestCase()
{
    m_local = std::make_unique<LocalService>();
    QVERIFY(m_local->service().setCatalogue(catalogue));
    m_system.install();
}

void TestNotify::init()
{
    QSettings().clear(); // the identifiers and the token
    m_local->reset();
    m_system.clear();
    m_log = std::make_unique<LogCapture>();
}

void TestNotify::cleanup()
{
    m_log.reset();
    QTRY_VERIFY(m_local->nothingUnderWay()); // before the next test clears the store
}

void TestNotify::registerDevice()
{
    BVT::initWithLaunchOptions({}, LocalService::clientId, LocalService::clientSecret);
    QTRY_VERIFY(m_local->nothingUnderWay());
    QVERIFY(!BVT::currentDevice().isNull());
    m_local->reset();
    m_log->clear();
}

void TestNotify::nothingIsSentWithoutADevice()
{
    // The registration never completes, so no device identifier is ever stored.
    bvtsim::Fault neverAnswer;
    neverAnswer.dropConnection = true;
    m_local->service().setFault("POST", "/devices", neverAnswer);
    BVT::initWithLaunchOptions({}, LocalService::clientId, LocalService::clientSecret);
    m_log->clear();

    Outcomes outcomes;
    BVTNotify::enableDevice(QByteArray("\x01"), outcomes.success(), outcomes.failure());
    BVTNotify::verifyPushEnabled(outcomes.success(), outcomes.failure());
    BVTNotify::getPreferences(outcomes.success(), outcomes.failure());
    BVTNotify::enablePreferenceWithCategory("news", "breaking", outcomes.success(),
                                            outcomes.failure());
    BVTNotify::disablePreferenceWithCategory(QString(), QString()); // logged, not thrown
    BVT::assignDeviceToUser("u", outcomes.success(), outcomes.failure());
    BVT::assignDeviceToUser(QString()); // logged, not thrown
    BVT::unassignDevice(outcomes.success(), outcomes.failure());
    const QStringList refusals(8, "You have not fired initWithLaunchOptions yet!");
    QCOMPARE(m_log->lines(), refusals);
    QTRY_VERIFY(m_local->nothingUnderWay());
    QCOMPARE(m_local->requestsFor("/devices").size(), 1); // sent and dropped, never again
    for (const bvtsim::RecordedRequest &request : m_local->service().requests())
        QVERIFY(request.path == "/oauth/token" || request.path == "/devices");
    QCOMPARE(outcomes.count(), 0);
    QVERIFY(m_system.requests().isEmpty());
}

void TestNotify::tokenText_data()
{
    QTest::addColumn<QVariant>("token");
    QTest::addColumn<QString>("text");

    QTest::newRow("bytes") << QVariant(QByteArray("\x00\x0F\xAB\xFF", 4)) << "000FABFF";
    QTest::newRow("string as it is") << QVariant("abc") << "abc";
    QTest::newRow("nil") << QVariant() << "";
    QTest::newRow("neither: read as bytes") << QVariant(42) << "3432";
}

void TestNotify::tokenText()
{
    QFETCH(QVariant, token);
    QFETCH(QString, text);

    QCOMPARE(BVTNotify::stringWithDeviceToken(token), text);
    QVERIFY(!BVTNotify::stringWithDeviceToken(token).isNull());
}

void TestNotify::enableStoresTheTokenOnceAcceptedAndBeforeSuccess()
{
    registerDevice();
    QVariant answer;
    QString stored; // when success runs
    BVTNotify::enableDevice(QByteArray("\xCA\xFE", 2), [&](const QVariant &response) {
        answer = response;
        stored = BVT::currentDeviceToken();
    });
    QTRY_VERIFY(m_local->nothingUnderWay());
    QCOMPARE(stored, "CAFE");
    QCOMPARE(answer.toMap()["device"].toMap()["push_token"].toString(), "CAFE");
    QCOMPARE(m_local->requestsFor("/devices/enable").first().body,
             "device[token]=CAFE&device[uuid]=" + BVT::currentDevice().toUtf8());
    QCOMPARE(m_log->lines().first(), "Got device token CAFE");
}

void TestNotify::failedEnableKeepsTheEarlierToken_data()
{
    QTest::addColumn<bvtsim::Fault>("fault");
    bvtsim::Fault dropped;
    dropped.dropConnection = true;
    bvtsim::Fault redirected{0, 302, "moved", "text/html"};
    redirected.headers = {{"Location", "/echo"}}; // a route that answers any method with 200
    QTest::newRow("dropped") << dropped;
    QTest::newRow("redirected") << redirected;
}

void TestNotify::failedEnableKeepsTheEarlierToken()
{
    QFETCH(bvtsim::Fault, fault);

    registerDevice();
    BVT::setCurrentDeviceToken("EARLIER");
    m_local->service().setFault("PATCH", "/devices/enable", fault);
    Outcomes outcomes;
    BVTNotify::enableDevice(QByteArray("\x01", 1), outcomes.success(), outcomes.failure());
    QTRY_VERIFY(m_local->nothingUnderWay());
    QCOMPARE(outcomes.texts.size(), 1);
    QCOMPARE(outcomes.answers.size(), 0);
    QCOMPARE(BVT::currentDeviceToken(), "EARLIER");
    QCOMPARE(m_local->requestsFor("/devices/enable").size(), 1); // sent once, never followed
    QVERIFY(m_local->requestsFor("/echo").isEmpty());
}

void TestNotify::verifyLogsAKnownTokenAndNilKeysThrow()
{
    BVTNotify::requestPushPermissions(); // asked for in any state, no device needed
    QCOMPARE(m_system.requests(), QStringList({"settings:7", "remote"}));
    QCOMPARE(m_log->lines(), QStringList{"requestPushPermissions"});

    registerDevice();
    BVT::setCurrentDeviceToken("00FF");
    m_log->clear();
    QVERIFY_THROWS_EXCEPTION(std::invalid_argument,
                             BVTNotify::enablePreferenceWithCategory(QString(), "breaking"));
    QVERIFY_THROWS_EXCEPTION(std::invalid_argument,
                             BVTNotify::disablePreferenceWithCategory("news", QString()));
    Outcomes outcomes;
    BVTNotify::verifyPushEnabled(outcomes.success(), outcomes.failure());
    BVTNotify::verifyPushEnabled(outcomes.success());
    BVTNotify::verifyPushEnabled();
    QCOMPARE(m_log->lines(), QStringList(3, "Verified token 00FF")); // none for what threw
    QCOMPARE(m_system.remoteRegistrations(), 1);                     // the request above only
    QVERIFY(m_local->nothingUnderWay());
    QCOMPARE(outcomes.count(), 0);
}

void TestNotify::changesGoToTheUserWhenAssignedAndFetchesToTheDevice()
{
    registerDevice();
    const QString device = BVT::currentDevice();
    Outcomes outcomes;
    BVT::assignDeviceToUser("u 1", outcomes.success(), nullptr);
    QTRY_VERIFY(m_local->nothingUnderWay());
    // The digest is off already, so the document is the same whichever is answered first.
    BVTNotify::disablePreferenceWithCategory("news", "digest", outcomes.success());
    BVTNotify::getPreferences(outcomes.success(), outcomes.failure());
    QTRY_VERIFY(m_local->nothingUnderWay());
    QCOMPARE(outcomes.answers.size(), 3);
    const QVariantList document = m_local->service().preferenceDocument(device).toVariantList();
    QVERIFY(outcomes.answers.contains(document));
    QCOMPARE(m_local->requestsFor("/preferences/disable").first().body,
             QByteArray("category=news&preference=digest&user[identifier]=u%201"));
    QCOMPARE(m_local->requestsFor("/preferences").first().query, "device[uuid]=" + device.toUtf8());
}

void TestNotify::everyChangeIsFollowedByOneVerify()
{
    registerDevice();
    m_local->service().setFault("PATCH", "/preferences/disable", {0, 500, {}, {}});
    Outcomes outcomes;
    // Without a token, verifying asks for push permission; a change that failed is verified too.
    BVTNotify::disablePreferenceWithCategory("orders", "shipping", outcomes.success(),
                                             outcomes.failure());
    QTRY_VERIFY(m_local->nothingUnderWay());
    QCOMPARE(m_system.remoteRegistrations(), 1);
    BVT::setCurrentDeviceToken("AB");
    BVTNotify::enablePreferenceWithCategory("news", "digest", outcomes.success());
    QTRY_VERIFY(m_local->nothingUnderWay());
    QCOMPARE(outcomes.texts.size(), 1);
    QCOMPARE(outcomes.answers.size(), 1);
    QCOMPARE(m_system.remoteRegistrations(), 1);
    QCOMPARE(m_log->linesStartingWith("Verified token"), QStringList{"Verified token AB"});
    QCOMPARE(m_local->requestsFor("/preferences/enable").first().body,
             "category=news&device[uuid]=" + BVT::currentDevice().toUtf8() + "&preference=digest");
}

void TestNotify::documentModelReadsTheFetchedDocument_data()
{
    QTest::addColumn<QByteArray>("document");
    QTest::addColumn<QString>("read");

    QTest::newRow("as meant") << QByteArray(R"([{"name":"News","key":"news","preferences":[
            {"name":"Breaking","key":"breaking","enabled":true},{"name":"Digest","key":"digest",
            "enabled":0}]},{"name":"Orders","key":"orders","preferences":[]}])")
                              << "News:news(Breaking:breaking=1,Digest:digest=0) Orders:orders()";
    QTest::newRow("enabled readings") << QByteArray(R"([{"name":"C","key":"c","preferences":[
            {"key":"a","enabled":1.5},{"key":"b","enabled":0.5},{"key":"c","enabled":-2},
            {"key":"d","enabled":" +7 days"},{"key":"e","enabled":"true"},{"key":"f","enabled":null},
            {"key":"g"},{"key":"h","enabled":[1]}]}])")
                                      << "C:c(~:a=1,~:b=0,~:c=1,~:d=1,~:e=0,~:f=0,~:g=0,~:h=0)";
    QTest::newRow("texts from numbers, empty kept") << QByteArray(
            R"([{"name":42,"key":true,"preferences":[{"name":1.5,"key":"","enabled":1},
            {"name":{"x":1},"key":null,"enabled":1}]}])")
                                                    << "42:1(1.5:=1,~:~=1)";
    QTest::newRow("neither object nor list")
            << QByteArray(R"([17,"text",null,[],{"preferences":"many"},{"preferences":[3,{}]}])")
            << "~:~() ~:~() ~:~() ~:~() ~:~() ~:~(~:~=0,~:~=0)";
}

void TestNotify::documentModelReadsTheFetchedDocument()
{
    QFETCH(QByteArray, document);
    QFETCH(QString, read);

    const QVariantList decoded = QJsonDocument::fromJson(document).toVariant().toList();
    // The model's reading in one line: "name:key(preferences)" per category, "name:key=enabled" per
    // preference, "~" for a null text.
    const auto text = [](const QString &value) { return value.isNull() ? "~" : value; };
    const auto summary = [&text](const bvt::PreferenceDocument &model) {
        QStringList categories;
        for (const bvt::PreferenceCategory &c : model.categories()) {
            QStringList preferences;
            for (const bvt::Preference &p : c.preferences)
                preferences << text(p.name) + ':' + text(p.key) + '=' + QString::number(p.enabled);
            categories << text(c.name) + ':' + text(c.key) + '(' + preferences.join(',') + ')';
        }
        return categories.join(' ');
    };

    // A second load is appended behind the first, as the screens show every fetch.
    bvt::PreferenceDocument model;
    model.append(decoded);
    QCOMPARE(summary(model), read);
    model.append(decoded);
    QCOMPARE(summary(model), read + ' ' + read);
    QCOMPARE(model.decoded(), decoded + decoded);
}

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setOrganizationName("BrevantiTests");
    QStandardPaths::setTestModeEnabled(true);
    TestNotify test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_notify.moc"
