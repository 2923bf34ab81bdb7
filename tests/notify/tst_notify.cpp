#include "localservice.h"
#include "logcapture.h"
#include "notify/preferencedocument.h"
#include "standinoperatingsystem.h"

#include <Brevanti/BVT.h>
#include <Brevanti/BVTNotify.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QSettings>
#include <QStandardPaths>
#include <QTest>

namespace {

struct Outcome
{
    int successes = 0;
    int failures = 0;
    QVariant response;
    QString tokenSeen; // the stored token when success ran
};

BVTSuccessBlock successInto(Outcome &outcome)
{
    return [&outcome](const QVariant &response) {
        ++outcome.successes;
        outcome.response = response;
        outcome.tokenSeen = BVT::currentDeviceToken();
    };
}

BVTFailureBlock failureInto(Outcome &outcome)
{
    return [&outcome](const QString &) { ++outcome.failures; };
}

const QJsonArray catalogue = QJsonDocument::fromJson(R"([
    {"name": "News", "key": "news", "preferences": [
        {"name": "Breaking news", "key": "breaking", "enabled": true},
        {"name": "Daily digest", "key": "digest", "enabled": false}]},
    {"name": "Orders", "key": "orders", "preferences": [
        {"name": "Shipping updates", "key": "shipping", "enabled": true}]}
])")
                                     .array();

void clearStore()
{
    QSettings settings;
    settings.remove(QStringLiteral("com.brevanti.ios.BVTDeviceId"));
    settings.remove(QStringLiteral("com.brevanti.ios.BVTUserId"));
    settings.remove(QStringLiteral("com.brevanti.ios.BVTDeviceToken"));
    settings.sync();
}

} // namespace

class TestNotify : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void nothingIsSentWithoutADevice_data();
    void nothingIsSentWithoutADevice();
    void tokenText_data();
    void tokenText();
    void enableStoresTheTokenOnceAcceptedAndBeforeSuccess();
    void failedEnableKeepsTheEarlierToken_data();
    void failedEnableKeepsTheEarlierToken();
    void verifyLogsAKnownTokenOrAsksOnce();
    void permissionRequestAsksForBadgeSoundAndAlert();
    void changeNamesTheUserWhenAssignedElseTheDevice();
    void everyChangeIsFollowedByOneVerify_data();
    void everyChangeIsFollowedByOneVerify();
    void nilKeysThrowBeforeAnythingHappens();
    void fetchHandsOverTheDocumentItself();
    void documentModelReadsTheFetchedDocument_data();
    void documentModelReadsTheFetchedDocument();
    void operatingSystemTokenReachesTheService();

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
    clearStore();
    m_local->reset();
    m_system.clear();
    m_system.setTokenToHandOut(QByteArray());
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

void TestNotify::nothingIsSentWithoutADevice_data()
{
    QTest::addColumn<int>("operation");
    QTest::newRow("enable") << 0;
    QTest::newRow("verify") << 1;
    QTest::newRow("fetch") << 2;
    QTest::newRow("switch on") << 3;
    QTest::newRow("switch off") << 4;
}

void TestNotify::nothingIsSentWithoutADevice()
{
    QFETCH(int, operation);

    // The registration never completes, so no device identifier is ever stored.
    bvtsim::Fault neverAnswer;
    neverAnswer.dropConnection = true;
    m_local->service().setFault("POST", "/devices", neverAnswer);
    BVT::initWithLaunchOptions({}, LocalService::clientId, LocalService::clientSecret);
    m_log->clear();

    Outcome outcome;
    switch (operation) {
    case 0:
        BVTNotify::enableDevice(QByteArray("\x01"), successInto(outcome), failureInto(outcome));
        break;
    case 1:
        BVTNotify::verifyPushEnabled(successInto(outcome), failureInto(outcome));
        break;
    case 2:
        BVTNotify::getPreferences(successInto(outcome), failureInto(outcome));
        break;
    case 3:
        BVTNotify::enablePreferenceWithCategory("news", "breaking", successInto(outcome),
                                                failureInto(outcome));
        break;
    case 4:
        BVTNotify::disablePreferenceWithCategory(QString(), QString()); // logged, not thrown
        break;
    }
    QCOMPARE(m_log->lines().first(), "You have not fired initWithLaunchOptions yet!");
    QTRY_VERIFY(m_local->nothingUnderWay());
    QCOMPARE(m_local->requestsFor("/devices").size(), 1); // sent and dropped, never again
    QCOMPARE(m_log->linesStartingWith("You have not fired").size(), 1);
    for (const bvtsim::RecordedRequest &request : m_local->service().requests())
        QVERIFY(request.path == "/oauth/token" || request.path == "/devices");
    QCOMPARE(outcome.successes + outcome.failures, 0);
    QVERIFY(m_system.requests().isEmpty());
}

void TestNotify::tokenText_data()
{
    QTest::addColumn<QVariant>("token");
    QTest::addColumn<QString>("text");

    QTest::newRow("bytes") << QVariant(QByteArray("\x00\x0F\xAB\xFF", 4)) << "000FABFF";
    QTest::newRow("no bytes") << QVariant(QByteArray()) << "";
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
    if (QTest::currentDataTag() != QByteArray("bytes"))
        return;

    // And that text is what the service receives.
    registerDevice();
    Outcome outcome;
    BVTNotify::enableDevice(token, successInto(outcome), failureInto(outcome));
    QTRY_VERIFY(m_local->nothingUnderWay());
    QCOMPARE(outcome.successes, 1);
    QCOMPARE(m_local->service().device(BVT::currentDevice())["push_token"].toString(), text);
    QCOMPARE(m_log->lines().first(), "Got device token " + text);
}

void TestNotify::enableStoresTheTokenOnceAcceptedAndBeforeSuccess()
{
    registerDevice();
    bvtsim::Fault slow;
    slow.delayMs = 100;
    m_local->service().setFault("PATCH", "/devices/enable", slow);
    Outcome outcome;
    BVTNotify::enableDevice(QByteArray("\xCA\xFE", 2), successInto(outcome), failureInto(outcome));
    QVERIFY(BVT::currentDeviceToken().isNull()); // not before the service has answered
    QTRY_VERIFY(m_local->nothingUnderWay());
    QCOMPARE(outcome.successes, 1);
    QCOMPARE(outcome.tokenSeen, "CAFE");
    QCOMPARE(outcome.response.toMap()["device"].toMap()["push_token"].toString(), "CAFE");
    QCOMPARE(m_local->requestsFor("/devices/enable").first().body,
             "device[token]=CAFE&device[uuid]=" + BVT::currentDevice().toUtf8());
}

void TestNotify::failedEnableKeepsTheEarlierToken_data()
{
    QTest::addColumn<bvtsim::Fault>("fault");
    bvtsim::Fault refused;
    refused.status = 422;
    bvtsim::Fault dropped;
    dropped.dropConnection = true;
    bvtsim::Fault redirected{0, 302, "moved", "text/html"};
    redirected.headers = {{"Location", "/echo"}}; // a route that answers any method with 200
    QTest::newRow("refused") << refused;
    QTest::newRow("dropped") << dropped;
    QTest::newRow("redirected") << redirected;
}

void TestNotify::failedEnableKeepsTheEarlierToken()
{
    QFETCH(bvtsim::Fault, fault);

    registerDevice();
    BVT::setCurrentDeviceToken("EARLIER");
    m_local->service().setFault("PATCH", "/devices/enable", fault);
    Outcome outcome;
    BVTNotify::enableDevice(QByteArray("\x01", 1), successInto(outcome), failureInto(outcome));
    QTRY_VERIFY(m_local->nothingUnderWay());
    QCOMPARE(outcome.failures, 1);
    QCOMPARE(outcome.successes, 0);
    QCOMPARE(BVT::currentDeviceToken(), "EARLIER");
    QCOMPARE(m_local->requestsFor("/devices/enable").size(), 1); // sent once, never followed
    QVERIFY(m_local->requestsFor("/echo").isEmpty());
}

void TestNotify::verifyLogsAKnownTokenOrAsksOnce()
{
    registerDevice();
    Outcome outcome;
    BVTNotify::verifyPushEnabled(successInto(outcome), failureInto(outcome));
    QCOMPARE(m_system.remoteRegistrations(), 1);
    QCOMPARE(m_log->lines(), QStringList{"requestPushPermissions"});

    BVT::setCurrentDeviceToken("00FF");
    m_log->clear();
    BVTNotify::verifyPushEnabled(successInto(outcome), failureInto(outcome));
    BVTNotify::verifyPushEnabled(successInto(outcome));
    BVTNotify::verifyPushEnabled();
    QCOMPARE(m_log->lines(), QStringList(3, "Verified token 00FF"));
    QCOMPARE(m_system.remoteRegistrations(), 1);
    QVERIFY(m_local->nothingUnderWay());
    QCOMPARE(outcome.successes + outcome.failures, 0);
    QVERIFY(m_local->service().requests().isEmpty());
}

void TestNotify::permissionRequestAsksForBadgeSoundAndAlert()
{
    // Asked for whatever the state: no device, no initialisation needed.
    BVTNotify::requestPushPermissions();
    QCOMPARE(m_system.requests(), QStringList({"settings:7", "remote"}));
    QCOMPARE(m_log->lines(), QStringList{"requestPushPermissions"});
}

void TestNotify::changeNamesTheUserWhenAssignedElseTheDevice()
{
    registerDevice();
    const QString device = BVT::currentDevice();
    Outcome assigned;
    BVT::assignDeviceToUser("u 1", successInto(assigned), nullptr);
    QTRY_VERIFY(m_local->nothingUnderWay());
    QCOMPARE(assigned.successes, 1);

    Outcome changes;
    BVTNotify::disablePreferenceWithCategory("news", "breaking", successInto(changes), nullptr);
    QTRY_VERIFY(m_local->nothingUnderWay());
    QCOMPARE(changes.successes, 1);
    BVT::unassignDevice(successInto(assigned), nullptr);
    QTRY_VERIFY(m_local->nothingUnderWay());
    QCOMPARE(assigned.successes, 2);
    BVTNotify::enablePreferenceWithCategory("news", "digest", successInto(changes), nullptr);
    QTRY_VERIFY(m_local->nothingUnderWay());
    QCOMPARE(changes.successes, 2);

    QCOMPARE(m_local->requestsFor("/preferences/disable").first().body,
             QByteArray("category=news&preference=breaking&user[identifier]=u%201"));
    QCOMPARE(m_local->requestsFor("/preferences/enable").first().body,
             "category=news&device[uuid]=" + device.toUtf8() + "&preference=digest");
}

void TestNotify::everyChangeIsFollowedByOneVerify_data()
{
    QTest::addColumn<bool>("tokenKnown");
    QTest::addColumn<bool>("requestFails");
    QTest::newRow("no token") << false << false;
    QTest::newRow("no token, failing") << false << true;
    QTest::newRow("token") << true << false;
    QTest::newRow("token, failing") << true << true;
}

void TestNotify::everyChangeIsFollowedByOneVerify()
{
    QFETCH(bool, tokenKnown);
    QFETCH(bool, requestFails);

    registerDevice();
    if (tokenKnown)
        BVT::setCurrentDeviceToken("AB");
    if (requestFails) {
        bvtsim::Fault broken;
        broken.status = 500;
        m_local->service().setFault("*", "/preferences/enable", broken);
        m_local->service().setFault("*", "/preferences/disable", broken);
    }
    m_log->clear();
    Outcome outcome;
    BVTNotify::enablePreferenceWithCategory("news", "digest", successInto(outcome),
                                            failureInto(outcome));
    BVTNotify::disablePreferenceWithCategory("orders", "shipping", successInto(outcome),
                                             failureInto(outcome));
    QTRY_VERIFY(m_local->nothingUnderWay());
    QCOMPARE(outcome.successes + outcome.failures, 2);
    QCOMPARE(outcome.failures, requestFails ? 2 : 0);
    QCOMPARE(m_system.remoteRegistrations(), tokenKnown ? 0 : 2);
    QCOMPARE(m_log->linesStartingWith("Verified token AB").size(), tokenKnown ? 2 : 0);
}

void TestNotify::nilKeysThrowBeforeAnythingHappens()
{
    registerDevice();
    QVERIFY_THROWS_EXCEPTION(std::invalid_argument,
                             BVTNotify::enablePreferenceWithCategory(QString(), "breaking"));
    QVERIFY_THROWS_EXCEPTION(std::invalid_argument,
                             BVTNotify::disablePreferenceWithCategory("news", QString()));
    QVERIFY(m_local->nothingUnderWay());
    QVERIFY(m_local->service().requests().isEmpty());
    QVERIFY(m_system.requests().isEmpty()); // no verify either
}

void TestNotify::fetchHandsOverTheDocumentItself()
{
    registerDevice();
    const QString device = BVT::currentDevice();
    Outcome assigned;
    BVT::assignDeviceToUser("reader", successInto(assigned), nullptr);
    QTRY_VERIFY(m_local->nothingUnderWay());
    QCOMPARE(assigned.successes, 1);

    Outcome fetched;
    BVTNotify::getPreferences(successInto(fetched), failureInto(fetched));
    QTRY_VERIFY(m_local->nothingUnderWay());
    QCOMPARE(fetched.successes, 1);
    QCOMPARE(fetched.response.typeId(), QMetaType::QVariantList);
    QCOMPARE(fetched.response, m_local->service().preferenceDocument(device).toVariantList());
    // Asked for by device even with a user assigned.
    QCOMPARE(m_local->requestsFor("/preferences").first().query, "device[uuid]=" + device.toUtf8());

    // An empty document is an answer like any other.
    QVERIFY(m_local->service().setCatalogue(QJsonArray()));
    BVTNotify::getPreferences(successInto(fetched));
    QTRY_VERIFY(m_local->nothingUnderWay());
    QCOMPARE(fetched.successes, 2);
    QCOMPARE(fetched.response, QVariant(QVariantList()));
    QVERIFY(m_local->service().setCatalogue(catalogue));
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
    const auto summary = [](const bvt::PreferenceDocument &model) {
        const auto text = [](const QString &value) { return value.isNull() ? "~" : value; };
        QStringList categories;
        for (const bvt::PreferenceCategory &category : model.categories()) {
            QStringList preferences;
            for (const bvt::Preference &preference : category.preferences)
                preferences << text(preference.name) + ':' + text(preference.key) + '='
                                + QString::number(preference.enabled);
            categories << text(category.name) + ':' + text(category.key) + '('
                            + preferences.join(',') + ')';
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

void TestNotify::operatingSystemTokenReachesTheService()
{
    // The host's part: pass what the operating system hands over to enableDevice.
    registerDevice();
    const QByteArray token = bvtstandin::StandInOperatingSystem::generateToken();
    m_system.setTokenToHandOut(token);
    QMetaObject::Connection bridge =
            connect(&m_system, &bvtstandin::StandInOperatingSystem::deviceTokenReceived,
                    [](const QByteArray &received) { BVTNotify::enableDevice(received); });
    BVTNotify::verifyPushEnabled();
    QTRY_COMPARE(BVT::currentDeviceToken(), QString::fromLatin1(token.toHex().toUpper()));
    disconnect(bridge);
    QCOMPARE(m_system.remoteRegistrations(), 1);
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
