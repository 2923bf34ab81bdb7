#include "localservice.h"
#include "logcapture.h"
#include "outcomes.h"

#include "core/device.h"
#include "core/userdefaults.h"

#include <Brevanti/BVT.h>

#include <QtTest>

namespace {

const QString deviceKey = QStringLiteral("com.brevanti.ios.BVTDeviceId");
const QString userKey = QStringLiteral("com.brevanti.ios.BVTUserId");
const QString tokenKey = QStringLiteral("com.brevanti.ios.BVTDeviceToken");

// The device identifier, user identifier and device token as another process reads them, after
// it has stored deviceId as the device identifier (unless that is empty).
QStringList storeInAnotherProcess(const QString &deviceId = QString())
{
    QProcess child;
    child.start(QCoreApplication::applicationFilePath(), {"--print-store", deviceId});
    child.waitForFinished(30000);
    QDataStream output(child.readAllStandardOutput());
    QStringList values;
    output >> values;
    return values;
}

} // namespace

class TestDevice : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void init();

    void facadeDoesNothingBeforeInitialisation();
    void firstRunRegistersAndStoresBeforeSuccess_data();
    void firstRunRegistersAndStoresBeforeSuccess();
    void registrationAnswerIsReadAsItComes_data();
    void registrationAnswerIsReadAsItComes();
    void deviceIdentifierIsWrittenOnce();
    void storeReadsStringsNumbersAndNothingElse_data();
    void storeReadsStringsNumbersAndNothingElse();
    void assignmentAndUnassignmentSendExactlyTheirFields();
    void secondInitialisationReplacesTheManager();
    void valuesOutliveTheProcessInAFileOfTheOwner();
    void onlyFailedWritesAreLoggedAndTheyAreKept_data();
    void onlyFailedWritesAreLoggedAndTheyAreKept();

private:
    std::unique_ptr<LocalService> m_local;
    std::unique_ptr<LogCapture> m_log;
    std::shared_ptr<BVTManager> m_manager; // reads and writes the store directly
};

void TestDevice::initTestCase()
{
    m_local = std::make_unique<LocalService>();
    m_local->service().addClient("second-client", "second-secret");
    // A manager for reading and writing the store; stored already, so it sends nothing.
    bvt::UserDefaults::standardUserDefaults().setObject("pre-registered", deviceKey);
    m_manager = BVTManager::initWithLaunchOptions({}, LocalService::clientId,
                                                  LocalService::clientSecret);
    m_log = std::make_unique<LogCapture>();
}

void TestDevice::init()
{
    QTRY_VERIFY(m_local->nothingUnderWay()); // what an earlier test started has ended
    m_local->reset();
    m_manager->clearBVTDeviceId();
    m_manager->clearBVTUserId();
    m_manager->clearBVTDeviceToken();
    bvt::Device::currentDevice().setSystemVersion(QString());
    LogCapture::clear();
}

void TestDevice::facadeDoesNothingBeforeInitialisation()
{
    // Runs first: no manager exists yet in this process.
    Outcomes outcomes;
    BVT::assignDeviceToUser("u");
    BVT::assignDeviceToUser("u", outcomes.success());
    BVT::assignDeviceToUser("u", outcomes.success(), outcomes.failure());
    BVT::unassignDevice();
    BVT::unassignDevice(outcomes.success());
    BVT::unassignDevice(outcomes.success(), outcomes.failure());
    BVT::getUrl("/echo", {}, outcomes.success(), outcomes.failure());
    BVT::postUrl("/echo", {}, outcomes.success(), outcomes.failure());
    BVT::patchUrl("/echo", {}, outcomes.success(), outcomes.failure());
    BVT::setCurrentDeviceToken("ABCD");
    QVERIFY(m_local->nothingUnderWay());
    QVERIFY(BVT::currentDevice().isNull() && BVT::currentUser().isNull()
            && BVT::currentDeviceToken().isNull());
    QCOMPARE(outcomes.count(), 0);
    QVERIFY(m_log->lines().isEmpty());
}

void TestDevice::registrationAnswerIsReadAsItComes_data()
{
    QTest::addColumn<int>("status");
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<QString>("stored");

    QTest::newRow("identifier") << 201 << QByteArray(R"({"device":{"uuid":"abc","x":1}})") << "abc";
    QTest::newRow("number as identifier") << 201 << QByteArray(R"({"device":{"uuid":42}})") << "42";
    QTest::newRow("device not an object") << 201 << QByteArray(R"({"device":"abc"})") << QString();
    QTest::newRow("server error") << 500 << QByteArray("<html>oops</html>") << QString();
}

void TestDevice::registrationAnswerIsReadAsItComes()
{
    QFETCH(int, status);
    QFETCH(QByteArray, answer);
    QFETCH(QString, stored);

    m_local->service().setFault("POST", "/devices", {0, status, answer, {}});
    Outcomes outcomes;
    m_manager->initDevice(outcomes.success(), outcomes.failure());
    QTRY_VERIFY(m_local->nothingUnderWay());
    // Success is called even when nothing could be stored; a failure stores nothing.
    QCOMPARE(outcomes.answers,
             status == 201 ? QVariantList{QJsonDocument::fromJson(answer).toVariant()}
                           : QVariantList());
    QCOMPARE(outcomes.texts.size(), status == 201 ? 0 : 1);
    QCOMPARE(m_manager->currentDevice(), stored);
    const QString set = "Set UUID to: " + (stored.isNull() ? "(null)" : stored);
    QCOMPARE(m_log->linesStartingWith("Set UUID"),
             status == 201 ? QStringList{set} : QStringList());
}

void TestDevice::deviceIdentifierIsWrittenOnce()
{
    m_manager->setBVTDeviceId(QVariant()); // nil: logged as set, but nothing is stored
    m_manager->setBVTDeviceId("first");
    m_manager->setBVTDeviceId("second");
    QCOMPARE(m_manager->currentDevice(), "first");
    QCOMPARE(m_log->lines(),
             QStringList({"No UUID yet, preference it", "Set UUID to: (null)",
                          "No UUID yet, preference it", "Set UUID to: first",
                          "Already has uuid: first"}));

    // Another process stores one after this process last read the store: that one stays.
    m_manager->clearBVTDeviceId();
    storeInAnotherProcess("theirs");
    m_manager->setBVTDeviceId("ours");
    QCOMPARE(m_log->lines().last(), "Already has uuid: theirs");
    QCOMPARE(m_manager->currentDevice(), "theirs");

    // The host can take the lines instead of qInfo(), and give them back.
    QStringList routed;
    bvt::setLogHandler([&routed](const QString &line) { routed << line; });
    m_manager->setCurrentDeviceToken("AB");
    bvt::setLogHandler({});
    m_manager->setCurrentDeviceToken("CD");
    QCOMPARE(routed, QStringList{"Set Device Token to: AB"});
    QCOMPARE(m_log->linesStartingWith("Set Device"), QStringList{"Set Device Token to: CD"});
}

void TestDevice::storeReadsStringsNumbersAndNothingElse_data()
{
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<QString>("read");

    QTest::newRow("empty string") << QVariant("") << "";
    QTest::newRow("integer") << QVariant(42) << "42";
    QTest::newRow("fraction") << QVariant(1.5) << "1.5";
    QTest::newRow("bool") << QVariant(true) << "1";
    const QString unpaired = QChar(0xDC00) + QStringLiteral("x") + QChar(0xD800);
    QTest::newRow("unpaired surrogates") << QVariant(unpaired) << unpaired;
    QTest::newRow("one-item string list") << QVariant(QStringList{"x"}) << QString();
    QTest::newRow("nil removes") << QVariant() << QString();
    QTest::newRow("null string removes") << QVariant(QString()) << QString();
}

void TestDevice::storeReadsStringsNumbersAndNothingElse()
{
    QFETCH(QVariant, value);
    QFETCH(QString, read);

    m_manager->setBVTUserId("before");
    m_manager->setBVTUserId(value);
    // This process and the next read the same; QString's == takes null for empty.
    for (const QString &user : {m_manager->currentUser(), storeInAnotherProcess().value(1)}) {
        QCOMPARE(user, read);
        QCOMPARE(user.isNull(), read.isNull());
    }
}

void TestDevice::assignmentAndUnassignmentSendExactlyTheirFields()
{
    BVT::initWithLaunchOptions({}, LocalService::clientId, LocalService::clientSecret);
    QTRY_VERIFY(m_local->nothingUnderWay()); // registered
    const QString device = BVT::currentDevice();
    QVERIFY(!device.isNull());
    m_manager->setBVTDeviceToken("00FF");

    QStringList usersSeen; // the stored user whenever success runs
    const auto seeUser = [&](const QVariant &) { usersSeen.append(m_manager->currentUser()); };
    BVT::assignDeviceToUser("user 1", seeUser, nullptr);
    QTRY_VERIFY(m_local->nothingUnderWay());
    BVT::unassignDevice(seeUser, nullptr);
    QTRY_VERIFY(m_local->nothingUnderWay());
    QCOMPARE(usersSeen, QStringList({"user 1", QString()}));
    QVERIFY(usersSeen.last().isNull());
    QCOMPARE(m_local->requestsFor("/devices/assign").first().body,
             "device[uuid]=" + device.toUtf8() + "&user[identifier]=user%201");
    QCOMPARE(m_local->requestsFor("/devices/unassign").first().body,
             "device[uuid]=" + device.toUtf8());
    QCOMPARE(BVT::currentDevice(), device);
    QCOMPARE(BVT::currentDeviceToken(), "00FF");
    QCOMPARE(m_log->linesStartingWith("Set "),
             QStringList({"Set UUID to: " + device, "Set Device Token to: 00FF",
                          "Set User ID to: user 1"}));

    // Refused or failed, either keeps the stored user.
    m_manager->setBVTUserId("kept");
    QVERIFY_THROWS_EXCEPTION(std::invalid_argument, BVT::assignDeviceToUser(QString()));
    QVERIFY(m_local->nothingUnderWay()); // a nil user is refused before anything is sent
    for (const char *path : {"/devices/assign", "/devices/unassign"})
        m_local->service().setFault("PATCH", path, {0, 500, {}, {}});
    Outcomes outcomes;
    BVT::assignDeviceToUser("other", outcomes.success(), outcomes.failure());
    BVT::unassignDevice(outcomes.success(), outcomes.failure());
    QTRY_VERIFY(m_local->nothingUnderWay());
    QVERIFY(outcomes.texts.size() == 2 && outcomes.answers.isEmpty());
    QCOMPARE(BVT::currentUser(), "kept");
}

void TestDevice::secondInitialisationReplacesTheManager()
{
    m_manager->setBVTDeviceId("d");
    BVT::initWithLaunchOptions({}, LocalService::clientId, LocalService::clientSecret);
    QCOMPARE(m_log->lines().last(), "Initializing device: d"); // registered: nothing is sent
    Outcomes outcomes;
    BVT::getUrl("/echo", {}, outcomes.success(), outcomes.failure());
    QTRY_VERIFY(m_local->nothingUnderWay());
    BVT::initWithLaunchOptions({}, "second-client", "second-secret");
    BVT::postUrl("/echo", {}, outcomes.success(), outcomes.failure());
    QTRY_VERIFY(m_local->nothingUnderWay());
    BVT::patchUrl("/echo", {}, outcomes.success(), outcomes.failure());
    QTRY_VERIFY(m_local->nothingUnderWay());
    QCOMPARE(outcomes.answers.size(), 3);

    // The new manager fetched a token of its own, with its own credentials; no registration.
    QCOMPARE(m_local->service().requests().size(), 5);
    QCOMPARE(m_local->requestsFor("/oauth/token").last().header("Authorization"),
             "Basic " + QByteArray("second-client:second-secret").toBase64());
    const auto echoes = m_local->requestsFor("/echo");
    QCOMPARE(echoes.at(1).method + echoes.at(2).method, "POSTPATCH"); // the facade forwards each
    QVERIFY(echoes.first().header("Authorization") != echoes.last().header("Authorization"));
}

void TestDevice::valuesOutliveTheProcessInAFileOfTheOwner()
{
    const QString file = QSettings().fileName();
    QFile::remove(file);
    // Mode 0600: Qt names the owner's bits twice, as the owner's and as this user's.
    const QFile::Permissions ownerOnly =
            QFile::ReadOwner | QFile::WriteOwner | QFile::ReadUser | QFile::WriteUser;
    m_manager->setBVTDeviceId("written-here");
    QCOMPARE(QFile::permissions(file), ownerOnly);
    QVERIFY(QFile::setPermissions(file, QFile::ReadOwner | QFile::WriteOwner | QFile::ReadOther));
    m_manager->setBVTUserId(7);
    QCOMPARE(QFile::permissions(file), ownerOnly);
    QCOMPARE(storeInAnotherProcess(), QStringList({"written-here", "7", QString()}));
}

void TestDevice::onlyFailedWritesAreLoggedAndTheyAreKept_data()
{
    QTest::addColumn<bool>("directoryInTheWay"); // else a file that cannot be parsed
    QTest::newRow("directory in the way") << true;
    QTest::newRow("file with a format problem") << false;
}

void TestDevice::onlyFailedWritesAreLoggedAndTheyAreKept()
{
    QFETCH(bool, directoryInTheWay);

    // A directory where the settings file should be makes every write fail, even for root. A file
    // with a format problem is read, then replaced by the write.
    const QString file = QSettings().fileName();
    QFile::remove(file);
    if (directoryInTheWay) {
        QVERIFY(QDir().mkpath(file));
    } else {
        QFile broken(file);
        QVERIFY(broken.open(QIODevice::WriteOnly));
        broken.write("[General\nno value\n");
    }
    m_manager->setBVTUserId("kept");
    QCOMPARE(m_manager->currentUser(), "kept");
    if (directoryInTheWay)
        QVERIFY(QDir().rmdir(file));
    m_manager->setBVTDeviceToken("AB"); // also writes what an earlier write could not

    const QString failure = "Failed to save settings to " + file + ": access error";
    QCOMPARE(m_log->linesStartingWith("Failed"),
             directoryInTheWay ? QStringList{failure} : QStringList());
    QCOMPARE(QSettings(file, QSettings::IniFormat).value(userKey).toString(), "kept");
}

// The system version goes in single precision, as the service has always had it.
void TestDevice::firstRunRegistersAndStoresBeforeSuccess_data()
{
    QTest::addColumn<QString>("version");
    QTest::addColumn<QString>("sent");

    QTest::newRow("three parts") << QString("10.3.1") << "10.300000";
    QTest::newRow("whole") << QString("13") << "13.000000";
    QTest::newRow("10.10 reads as 10.1") << QString("10.10") << "10.100000";
    QTest::newRow("leading blanks") << QString("  8.4.1") << "8.400000";
    QTest::newRow("no number") << QString("beta 2") << "0.000000";
}

void TestDevice::firstRunRegistersAndStoresBeforeSuccess()
{
    QFETCH(QString, version);
    QFETCH(QString, sent);

    bvt::Device::currentDevice().setSystemVersion(version);
    QString stored; // when success runs
    m_manager->initDevice([&](const QVariant &) { stored = m_manager->currentDevice(); });
    QTRY_VERIFY(m_local->nothingUnderWay());
    const QString issued = m_local->service().deviceIds().last();
    QCOMPARE(stored, issued);
    const QJsonObject device = m_local->service().device(issued);
    QCOMPARE(QStringList({device["os"].toString(), device["os_version"].toString(),
                          device["model"].toString(), device["manufacturer"].toString()}),
             QStringList({"ios", sent, bvt::Device::currentDevice().model(), "Apple"}));
}

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setOrganizationName("BrevantiTests");
    QStandardPaths::setTestModeEnabled(true);
    if (app.arguments().value(1) == "--print-store") { // the other process of storeInAnotherProcess
        bvt::UserDefaults &store = bvt::UserDefaults::standardUserDefaults();
        if (!app.arguments().at(2).isEmpty()) {
            store.setObject(app.arguments().at(2), deviceKey);
            store.synchronize();
        }
        QFile output;
        output.open(stdout, QIODevice::WriteOnly);
        QDataStream stream(&output);
        stream << QStringList{store.stringForKey(deviceKey), store.stringForKey(userKey),
                              store.stringForKey(tokenKey)};
        return 0;
    }
    TestDevice test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_device.moc"
