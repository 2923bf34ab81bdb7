#include "localservice.h"
#include "logcapture.h"

#include "core/device.h"
#include "core/log.h"
#include "core/userdefaults.h"
#include "device/devicedescription.h"

#include <Brevanti/BVT.h>

#include <QDataStream>
#include <QDir>
#include <QProcess>
#include <QSettings>
#include <QStandardPaths>
#include <QTest>

#include <cstdio>
#include <sys/stat.h>
#include <sys/utsname.h>

// Declared again here with C linkage: a C++-mangled definition would not link.
extern "C" const double BrevantiVersionNumber;
extern "C" const unsigned char BrevantiVersionString[];

namespace {

const QString deviceKey = QStringLiteral("com.brevanti.ios.BVTDeviceId");
const QString userKey = QStringLiteral("com.brevanti.ios.BVTUserId");
const QString tokenKey = QStringLiteral("com.brevanti.ios.BVTDeviceToken");

struct Outcome
{
    int successes = 0;
    int failures = 0;
    QVariant response;
    QString deviceSeen; // the stored device identifier when success ran
    QString userSeen;
};

BVTSuccessBlock successInto(Outcome &outcome)
{
    return [&outcome](const QVariant &response) {
        ++outcome.successes;
        outcome.response = response;
        outcome.deviceSeen = bvt::UserDefaults::standardUserDefaults().stringForKey(deviceKey);
        outcome.userSeen = bvt::UserDefaults::standardUserDefaults().stringForKey(userKey);
    };
}

BVTFailureBlock failureInto(Outcome &outcome)
{
    return [&outcome](const QString &) { ++outcome.failures; };
}

// The device identifier, user identifier and device token as another process reads them, after
// it has stored deviceId as the device identifier (unless that is null).
QStringList storeInAnotherProcess(const QString &deviceId = QString())
{
    QStringList arguments{"--print-store"};
    if (!deviceId.isNull())
        arguments.append(deviceId);
    QProcess child;
    child.start(QCoreApplication::applicationFilePath(), arguments);
    child.waitForFinished(30000);
    QDataStream output(child.readAllStandardOutput());
    QStringList values;
    output >> values;
    return values;
}

// The permission bits of a file, in octal as chmod takes them.
QString modeOf(const QString &path)
{
    struct stat status = {};
    ::stat(QFile::encodeName(path).constData(), &status);
    return QString::number(status.st_mode & 0777, 8);
}

} // namespace

class TestDevice : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void facadeDoesNothingBeforeInitialisation();
    void firstRunRegistersAndStoresBeforeSuccess();
    void storedIdentifierMeansNoRequest();
    void registrationAnswerIsReadAsItComes_data();
    void registrationAnswerIsReadAsItComes();
    void failedRegistrationStoresNothing();
    void deviceIdentifierIsWrittenOnce();
    void storeReadsStringsNumbersAndNothingElse_data();
    void storeReadsStringsNumbersAndNothingElse();
    void assignmentAndUnassignmentSendExactlyTheirFields();
    void failuresKeepTheStoredUser_data();
    void failuresKeepTheStoredUser();
    void deviceBoundCallsBeforeRegistrationOnlyLog();
    void nilUserThrowsBeforeAnythingIsSent();
    void secondInitialisationReplacesTheManager();
    void valuesOutliveTheProcessInAFileOfTheOwner();
    void onlyFailedWritesAreLoggedAndTheyAreKept_data();
    void onlyFailedWritesAreLoggedAndTheyAreKept();
    void systemVersionIsSentInSinglePrecision_data();
    void systemVersionIsSentInSinglePrecision();
    void deviceNameIsTheMachineField();
    void versionSymbols();

private:
public:
    static void clearKeys();

private:
    void initialise(); // BVT's manager, with the log of its start cleared

    std::unique_ptr<LocalService> m_local;
    std::unique_ptr<LogCapture> m_log;
    std::shared_ptr<BVTManager> m_manager; // reads and writes the store directly
};

void TestDevice::clearKeys()
{
    QSettings settings;
    for (const QString &key : {deviceKey, userKey, tokenKey})
        settings.remove(key);
    settings.sync();
}

void TestDevice::initTestCase()
{
    m_local = std::make_unique<LocalService>();
    m_local->service().addClient("second-client", "second-secret");
    // A manager for reading and writing the store; stored already, so it sends nothing.
    bvt::UserDefaults::standardUserDefaults().setObject("pre-registered", deviceKey);
    m_manager = BVTManager::initWithLaunchOptions({}, LocalService::clientId,
                                                  LocalService::clientSecret);
}

void TestDevice::init()
{
    QTRY_VERIFY(m_local->nothingUnderWay()); // what an earlier test started has ended
    m_local->reset();
    m_log = std::make_unique<LogCapture>();
}

void TestDevice::cleanup()
{
    m_log.reset();
    if (m_manager) {
        m_manager->clearBVTDeviceId();
        m_manager->clearBVTUserId();
        m_manager->clearBVTDeviceToken();
    }
    bvt::Device::currentDevice().setSystemVersion(QString());
}

void TestDevice::initialise()
{
    BVT::initWithLaunchOptions({}, LocalService::clientId, LocalService::clientSecret);
}

void TestDevice::facadeDoesNothingBeforeInitialisation()
{
    // Runs first: no manager exists yet in this process.
    Outcome outcome;
    BVT::assignDeviceToUser("u", successInto(outcome), failureInto(outcome));
    BVT::unassignDevice(successInto(outcome), failureInto(outcome));
    BVT::getUrl("/echo", {}, successInto(outcome), failureInto(outcome));
    BVT::postUrl("/echo", {}, successInto(outcome), failureInto(outcome));
    BVT::patchUrl("/echo", {}, successInto(outcome), failureInto(outcome));
    BVT::setCurrentDeviceToken("ABCD");
    QVERIFY(m_local->nothingUnderWay());
    QVERIFY(BVT::currentDevice().isNull());
    QVERIFY(BVT::currentUser().isNull());
    QVERIFY(BVT::currentDeviceToken().isNull());
    QCOMPARE(outcome.successes + outcome.failures, 0);
    QVERIFY(m_local->service().requests().isEmpty());
    QVERIFY(m_log->lines().isEmpty());
}

void TestDevice::firstRunRegistersAndStoresBeforeSuccess()
{
    Outcome outcome;
    bvt::Device::currentDevice().setSystemVersion("10.3.1");
    m_manager->initDevice(successInto(outcome), failureInto(outcome));
    QTRY_VERIFY(m_local->nothingUnderWay());
    QCOMPARE(outcome.successes, 1);

    const QString issued = m_local->service().deviceIds().last();
    QCOMPARE(outcome.deviceSeen, issued);
    QCOMPARE(m_manager->currentDevice(), issued);
    QCOMPARE(outcome.response.toMap()["device"].toMap()["uuid"].toString(), issued);
    const QJsonObject stored = m_local->service().device(issued);
    QCOMPARE(stored["os"].toString(), "ios");
    QCOMPARE(stored["os_version"].toString(), "10.300000");
    QCOMPARE(stored["model"].toString(), bvt::Device::currentDevice().model());
    QCOMPARE(stored["manufacturer"].toString(), "Apple");
    const QStringList tail = m_log->lines().mid(m_log->lines().size() - 2);
    QCOMPARE(tail, QStringList({"No UUID yet, preference it", "Set UUID to: " + issued}));
}

void TestDevice::storedIdentifierMeansNoRequest()
{
    m_manager->setBVTDeviceId("stored-id");
    m_log->clear();
    Outcome outcome;
    m_manager->initDevice(successInto(outcome), failureInto(outcome));
    QVERIFY(m_local->nothingUnderWay());
    QCOMPARE(m_log->lines(), QStringList{"Initializing device: stored-id"});
    QCOMPARE(outcome.successes + outcome.failures, 0);
    QVERIFY(m_local->service().requests().isEmpty());
}

void TestDevice::registrationAnswerIsReadAsItComes_data()
{
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<QString>("stored");

    QTest::newRow("identifier") << QByteArray(R"({"device":{"uuid":"abc","x":1}})") << "abc";
    QTest::newRow("number as identifier") << QByteArray(R"({"device":{"uuid":42}})") << "42";
    QTest::newRow("no device") << QByteArray(R"({"other":1})") << QString();
    QTest::newRow("no uuid") << QByteArray(R"({"device":{}})") << QString();
    QTest::newRow("device not an object") << QByteArray(R"({"device":"abc"})") << QString();
    QTest::newRow("an array") << QByteArray(R"([{"device":{"uuid":"abc"}}])") << QString();
}

void TestDevice::registrationAnswerIsReadAsItComes()
{
    QFETCH(QByteArray, answer);
    QFETCH(QString, stored);

    bvtsim::Fault fault;
    fault.status = 201;
    fault.body = answer;
    m_local->service().setFault("POST", "/devices", fault);
    Outcome outcome;
    m_manager->initDevice(successInto(outcome), failureInto(outcome));
    QTRY_VERIFY(m_local->nothingUnderWay());
    QCOMPARE(outcome.successes, 1); // called even when nothing could be stored
    QCOMPARE(m_manager->currentDevice(), stored);
    QCOMPARE(m_log->lines().mid(m_log->lines().size() - 2),
             QStringList({"No UUID yet, preference it",
                          "Set UUID to: " + (stored.isNull() ? "(null)" : stored)}));
}

void TestDevice::failedRegistrationStoresNothing()
{
    bvtsim::Fault fault;
    fault.status = 500;
    fault.body = "<html>oops</html>";
    m_local->service().setFault("POST", "/devices", fault);
    Outcome outcome;
    m_manager->initDevice(successInto(outcome), failureInto(outcome));
    QTRY_VERIFY(m_local->nothingUnderWay());
    QCOMPARE(outcome.failures, 1);
    QVERIFY(m_manager->currentDevice().isNull());
    QVERIFY(m_log->linesStartingWith("No UUID").isEmpty());
}

void TestDevice::deviceIdentifierIsWrittenOnce()
{
    m_manager->setBVTDeviceId(QVariant()); // nil: logged as set, but nothing is stored
    QVERIFY(m_manager->currentDevice().isNull());
    m_manager->setBVTDeviceId("first");
    m_manager->setBVTDeviceId("second");
    QCOMPARE(m_manager->currentDevice(), "first");
    QCOMPARE(m_log->lines(),
             QStringList({"No UUID yet, preference it", "Set UUID to: (null)",
                          "No UUID yet, preference it", "Set UUID to: first",
                          "Already has uuid: first"}));
    m_manager->clearBVTDeviceId();
    m_manager->setBVTDeviceId("third");
    QCOMPARE(m_manager->currentDevice(), "third");

    // Another process stores one after this process last read the store: that one stays.
    m_manager->clearBVTDeviceId();
    QVERIFY(m_manager->currentDevice().isNull());
    QCOMPARE(storeInAnotherProcess("theirs").value(0), "theirs");
    m_manager->setBVTDeviceId("fourth");
    QCOMPARE(m_log->lines().last(), "Already has uuid: theirs");
    QCOMPARE(m_manager->currentDevice(), "theirs");
}

void TestDevice::storeReadsStringsNumbersAndNothingElse_data()
{
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<QString>("read");

    QTest::newRow("string") << QVariant("u-1") << "u-1";
    QTest::newRow("empty string") << QVariant("") << "";
    QTest::newRow("integer") << QVariant(42) << "42";
    QTest::newRow("fraction") << QVariant(1.5) << "1.5";
    QTest::newRow("bool") << QVariant(true) << "1";
    const QString unpaired = QChar(0xDC00) + QStringLiteral("x") + QChar(0xD800);
    QTest::newRow("unpaired surrogates") << QVariant(unpaired) << unpaired;
    QTest::newRow("list") << QVariant(QVariantList{1, 2}) << QString();
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
    QCOMPARE(m_manager->currentUser(), read);
    QCOMPARE(m_manager->currentUser().isNull(), read.isNull());
    m_manager->setBVTDeviceToken(value);
    QCOMPARE(m_manager->currentDeviceToken(), read);
    const QString line = "Set Device Token to: " + bvt::describe(value);
    QCOMPARE(m_log->lines().last(), QString::fromUtf8(line.toUtf8())); // the log carries UTF-8

    const QStringList next = storeInAnotherProcess(); // reads just the same
    QCOMPARE(next, QStringList({QString(), read, read}));
    QCOMPARE(next.value(1).isNull(), read.isNull());
}

void TestDevice::assignmentAndUnassignmentSendExactlyTheirFields()
{
    initialise(); // registers the device
    QTRY_VERIFY(m_local->nothingUnderWay());
    QVERIFY(!BVT::currentDevice().isNull());
    const QString device = BVT::currentDevice();
    QCOMPARE(device, m_local->service().deviceIds().last());
    m_manager->setBVTDeviceToken("00FF");

    Outcome assigned;
    BVT::assignDeviceToUser("user 1", successInto(assigned), failureInto(assigned));
    QTRY_VERIFY(m_local->nothingUnderWay());
    QCOMPARE(assigned.successes, 1);
    QCOMPARE(assigned.userSeen, "user 1"); // stored before the callback
    QCOMPARE(m_local->service().device(device)["user"].toString(), "user 1");
    QCOMPARE(m_local->requestsFor("/devices/assign").first().body,
             "device[uuid]=" + device.toUtf8() + "&user[identifier]=user%201");

    Outcome unassigned;
    BVT::unassignDevice(successInto(unassigned), failureInto(unassigned));
    QTRY_VERIFY(m_local->nothingUnderWay());
    QCOMPARE(unassigned.successes, 1);
    QVERIFY(unassigned.userSeen.isNull());
    QVERIFY(m_local->service().device(device)["user"].isNull());
    QCOMPARE(m_local->requestsFor("/devices/unassign").first().body,
             "device[uuid]=" + device.toUtf8());
    QCOMPARE(BVT::currentDevice(), device);
    QCOMPARE(BVT::currentDeviceToken(), "00FF");
    QVERIFY(m_log->lines().contains("Set User ID to: user 1"));
}

void TestDevice::failuresKeepTheStoredUser_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<bvtsim::Fault>("fault");

    bvtsim::Fault serverError;
    serverError.status = 500;
    bvtsim::Fault dropped;
    dropped.dropConnection = true;
    QTest::newRow("assign 500") << "/devices/assign" << serverError;
    QTest::newRow("assign dropped") << "/devices/assign" << dropped;
    QTest::newRow("unassign 500") << "/devices/unassign" << serverError;
    QTest::newRow("unknown device") << "/devices/assign" << bvtsim::Fault();
}

void TestDevice::failuresKeepTheStoredUser()
{
    QFETCH(QString, path);
    QFETCH(bvtsim::Fault, fault);

    m_manager->setBVTDeviceId("not-known-to-the-service");
    initialise();
    m_manager->setBVTUserId("kept");
    m_local->service().setFault("PATCH", path, fault);
    Outcome outcome;
    if (path.endsWith("unassign"))
        BVT::unassignDevice(successInto(outcome), failureInto(outcome));
    else
        BVT::assignDeviceToUser("other", successInto(outcome), failureInto(outcome));
    QTRY_VERIFY(m_local->nothingUnderWay());
    QCOMPARE(outcome.failures, 1);
    QCOMPARE(outcome.successes, 0);
    QCOMPARE(BVT::currentUser(), "kept");
    QCOMPARE(BVT::currentDevice(), "not-known-to-the-service");
}

void TestDevice::deviceBoundCallsBeforeRegistrationOnlyLog()
{
    bvtsim::Fault neverAnswer; // keeps the registration of the new manager from completing
    neverAnswer.dropConnection = true;
    m_local->service().setFault("POST", "/devices", neverAnswer);
    initialise();
    m_log->clear();
    Outcome outcome;
    BVT::assignDeviceToUser("u", successInto(outcome), failureInto(outcome));
    BVT::unassignDevice(successInto(outcome), failureInto(outcome));
    BVT::assignDeviceToUser(QString()); // no device: logged, not thrown
    QTRY_VERIFY(m_local->nothingUnderWay());
    QCOMPARE(m_local->requestsFor("/devices").size(), 1); // the registration, dropped
    QCOMPARE(m_log->linesStartingWith("You have not fired").size(), 3);
    QCOMPARE(m_log->lines().first(), "You have not fired initWithLaunchOptions yet!");
    QCOMPARE(outcome.successes + outcome.failures, 0);
    QVERIFY(m_local->requestsFor("/devices/assign").isEmpty());
    QVERIFY(m_local->requestsFor("/devices/unassign").isEmpty());
}

void TestDevice::nilUserThrowsBeforeAnythingIsSent()
{
    m_manager->setBVTDeviceId("d");
    initialise();
    m_log->clear();
    QVERIFY_THROWS_EXCEPTION(std::invalid_argument, BVT::assignDeviceToUser(QString()));
    QVERIFY(m_local->nothingUnderWay());
    QVERIFY(m_local->service().requests().isEmpty());
    QVERIFY(m_log->lines().isEmpty());
}

void TestDevice::secondInitialisationReplacesTheManager()
{
    m_manager->setBVTDeviceId("d");
    Outcome outcome;
    initialise();
    BVT::getUrl("/echo", {}, successInto(outcome), failureInto(outcome));
    QTRY_VERIFY(m_local->nothingUnderWay());
    QCOMPARE(outcome.successes, 1);
    BVT::initWithLaunchOptions({}, "second-client", "second-secret");
    BVT::postUrl("/echo", {}, successInto(outcome), failureInto(outcome));
    QTRY_VERIFY(m_local->nothingUnderWay());
    QCOMPARE(outcome.successes, 2);
    BVT::patchUrl("/echo", {}, successInto(outcome), failureInto(outcome));
    QTRY_VERIFY(m_local->nothingUnderWay());
    QCOMPARE(outcome.successes, 3);

    // The new manager fetched a token of its own, with its own credentials.
    const auto tokens = m_local->requestsFor("/oauth/token");
    QCOMPARE(tokens.size(), 2);
    QCOMPARE(tokens.last().header("Authorization"),
             "Basic " + QByteArray("second-client:second-secret").toBase64());
    const auto echoes = m_local->requestsFor("/echo");
    QCOMPARE(echoes.size(), 3);
    QCOMPARE(echoes.at(1).method + echoes.at(2).method, "POSTPATCH"); // the facade forwards each
    QVERIFY(echoes.first().header("Authorization") != echoes.last().header("Authorization"));
}

void TestDevice::valuesOutliveTheProcessInAFileOfTheOwner()
{
    const QString file = QSettings().fileName();
    QFile::remove(file);
    m_manager->setBVTDeviceId("written-here");
    QCOMPARE(modeOf(file), "600");
    QVERIFY(QFile::setPermissions(file, QFile::ReadOwner | QFile::WriteOwner | QFile::ReadOther));
    m_manager->setBVTUserId(7);
    QCOMPARE(modeOf(file), "600");
    QCOMPARE(storeInAnotherProcess(), QStringList({"written-here", "7", QString()}));
}

void TestDevice::onlyFailedWritesAreLoggedAndTheyAreKept_data()
{
    QTest::addColumn<bool>("directoryInTheWay"); // else a file that cannot be parsed
    QTest::addColumn<QStringList>("failures");

    const QString file = QSettings().fileName();
    QTest::newRow("directory in the way")
            << true << QStringList{"Failed to save settings to " + file + ": access error"};
    QTest::newRow("file with a format problem") << false << QStringList();
}

void TestDevice::onlyFailedWritesAreLoggedAndTheyAreKept()
{
    QFETCH(bool, directoryInTheWay);
    QFETCH(QStringList, failures);

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

    QCOMPARE(m_log->linesStartingWith("Failed"), failures);
    QCOMPARE(QSettings(file, QSettings::IniFormat).value(userKey).toString(), "kept");
}

void TestDevice::systemVersionIsSentInSinglePrecision_data()
{
    QTest::addColumn<QString>("version");
    QTest::addColumn<QString>("sent");

    QTest::newRow("three parts") << "10.3.1"
                                 << "10.300000";
    QTest::newRow("9.3.2") << "9.3.2"
                           << "9.300000";
    QTest::newRow("whole") << "13"
                           << "13.000000";
    QTest::newRow("10.1") << "10.1"
                          << "10.100000";
    QTest::newRow("10.10 reads as 10.1") << "10.10"
                                         << "10.100000";
    QTest::newRow("leading blanks") << "  8.4.1"
                                    << "8.400000";
    QTest::newRow("empty") << ""
                           << "0.000000";
    QTest::newRow("no number") << "beta 2"
                               << "0.000000";
}

void TestDevice::systemVersionIsSentInSinglePrecision()
{
    QFETCH(QString, version);
    QFETCH(QString, sent);

    bvt::Device::currentDevice().setSystemVersion(version);
    const BVTParameters parameters = m_manager->deviceParams();
    QCOMPARE(parameters.keys(), QStringList{"device"});
    const BVTParameters device = parameters["device"].toMap();
    QCOMPARE(device.keys(), QStringList({"manufacturer", "model", "os", "os_version"}));
    QCOMPARE(device["os_version"].toString(), sent);
}

void TestDevice::deviceNameIsTheMachineField()
{
    utsname system{};
    QCOMPARE(uname(&system), 0);
    QCOMPARE(deviceName(), QString::fromUtf8(system.machine));
}

void TestDevice::versionSymbols()
{
    QCOMPARE(BrevantiVersionNumber, 1.0);
    const char *text = reinterpret_cast<const char *>(BrevantiVersionString);
    QCOMPARE(QByteArray(text), QByteArray("@(#)PROGRAM:Brevanti  PROJECT:Brevanti-1\n"));
}

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setOrganizationName("BrevantiTests");
    QStandardPaths::setTestModeEnabled(true);
    const qsizetype child = app.arguments().indexOf("--print-store");
    if (child > 0) {
        // The other process of storeInAnotherProcess.
        bvt::UserDefaults &store = bvt::UserDefaults::standardUserDefaults();
        if (child + 1 < app.arguments().size()) {
            store.setObject(app.arguments().at(child + 1), deviceKey);
            store.synchronize();
        }
        QFile output;
        output.open(stdout, QIODevice::WriteOnly);
        QDataStream stream(&output);
        stream << QStringList{store.stringForKey(deviceKey), store.stringForKey(userKey),
                              store.stringForKey(tokenKey)};
        return 0;
    }
    TestDevice::clearKeys();
    TestDevice test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_device.moc"
