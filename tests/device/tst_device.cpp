#include "localservice.h"
#include "outcomes.h"

#include "core/device.h"
#include "core/userdefaults.h"

#include <Brevanti/BVT.h>

#include <QtTest>

#include <sys/mount.h>

#include <cerrno>
#include <cstring>

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
    void initTestCase()
    {
        m_local = std::make_unique<LocalService>();
        m_local->service().addClient("second-client", "second-secret");
        // A manager for reading and writing the store; stored already, so it sends nothing.
        bvt::UserDefaults::standardUserDefaults().setObject("pre-registered", deviceKey);
        m_manager = BVTManager::initWithLaunchOptions({}, LocalService::clientId,
                                                      LocalService::clientSecret);
        m_log = std::make_unique<LogCapture>();
    }

    void init()
    {
        QTRY_VERIFY(m_local->nothingUnderWay()); // what an earlier test started has ended
        m_local->reset();
        m_manager->clearBVTDeviceId();
        m_manager->clearBVTUserId();
        m_manager->clearBVTDeviceToken();
        bvt::Device::currentDevice().setSystemVersion(QString());
        LogCapture::clear();
    }

    void facadeDoesNothingBeforeInitialisation()
    {
        // Runs first: no manager exists yet in this process.
        Outcomes outcomes;
        BVT::assignDeviceToUser("u", outcomes.success(), outcomes.failure());
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

    // The system version goes in single precision, as the service has always had it. The answer is
    // read as it comes: success runs even when nothing could be stored; a failure stores nothing.
    void firstRunRegistersAndStoresBeforeSuccess_data()
    {
        QTest::addColumn<QString>("version");
        QTest::addColumn<QString>("sent");
        QTest::addColumn<bvtsim::Fault>("answer"); // none: the service registers the device
        QTest::addColumn<QString>("stored");       // null: nothing; "issued": what it issued
        const auto row = [](const char *name, const char *version, const char *sent,
                            const bvtsim::Fault &answer = {}, const QString &stored = "issued") {
            QTest::newRow(name) << QString(version) << QString(sent) << answer << stored;
        };
        row("three parts", "10.3.1", "10.300000");
        row("whole", "13", "13.000000");
        row("10.10 reads as 10.1", "10.10", "10.100000");
        row("leading blanks", "  8.4.1", "8.400000");
        row("no number", "beta 2", "0.000000");
        row("number as identifier", "13", "13.000000",
            bvtsim::Fault::answer(201, R"({"device":{"uuid":42}})"), "42");
        row("device not an object", "13", "13.000000",
            bvtsim::Fault::answer(201, R"({"device":"abc"})"), QString());
        row("server error", "13", "13.000000", bvtsim::Fault::answer(500, "<html>oops</html>"),
            QString());
    }

    void firstRunRegistersAndStoresBeforeSuccess()
    {
        QFETCH(QString, version);
        QFETCH(QString, sent);
        QFETCH(bvtsim::Fault, answer);
        QFETCH(QString, stored);

        bvt::Device::currentDevice().setSystemVersion(version);
        m_local->service().setFault("POST", "/devices", answer);
        Outcomes outcomes;
        QString storedAtSuccess = "never";
        m_manager->initDevice(
                [&](const QVariant &) { storedAtSuccess = m_manager->currentDevice(); },
                outcomes.failure());
        QTRY_VERIFY(m_local->nothingUnderWay());
        const bool failed = answer.answerStatus == 500;
        if (stored == "issued") {
            stored = m_local->service().deviceIds().last();
            const QJsonObject device = m_local->service().device(stored);
            QCOMPARE(QStringList({device["os"].toString(), device["os_version"].toString(),
                                  device["model"].toString(), device["manufacturer"].toString()}),
                     QStringList({"ios", sent, bvt::Device::currentDevice().model(), "Apple"}));
        }
        QCOMPARE(outcomes.texts.size(), int(failed));
        QCOMPARE(storedAtSuccess, failed ? "never" : stored);
        QCOMPARE(m_manager->currentDevice(), stored);
        const QString set = "Set UUID to: " + (stored.isNull() ? "(null)" : stored);
        QCOMPARE(m_log->linesStartingWith("Set UUID"), failed ? QStringList() : QStringList{set});
    }

    void deviceIdentifierIsWrittenOnce()
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

    void storeReadsStringsNumbersAndNothingElse_data()
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

    void storeReadsStringsNumbersAndNothingElse()
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

    void assignmentAndUnassignmentSendExactlyTheirFields()
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
            m_local->service().setFault("PATCH", path, bvtsim::Fault::status(500));
        Outcomes outcomes;
        BVT::assignDeviceToUser("other", outcomes.success(), outcomes.failure());
        BVT::unassignDevice(outcomes.success(), outcomes.failure());
        QTRY_VERIFY(m_local->nothingUnderWay());
        QVERIFY(outcomes.texts.size() == 2 && outcomes.answers.isEmpty());
        QCOMPARE(BVT::currentUser(), "kept");
    }

    void secondInitialisationReplacesTheManager()
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
        QCOMPARE(echoes.at(1).method + echoes.at(2).method,
                 "POSTPATCH"); // the facade forwards each
        QVERIFY(echoes.first().header("Authorization") != echoes.last().header("Authorization"));
    }

    void valuesOutliveTheProcessInAFileOfTheOwner_data()
    {
        QTest::addColumn<QString>("link"); // the settings file is a symbolic link to this; "": none
        QTest::newRow("file") << QString();
        QTest::newRow("link to a file") << "target.conf";
        QTest::newRow("dangling link") << "missing.conf";
    }

    // The file is the store's own: a symbolic link in its place is replaced, and what it named is
    // neither written nor given another mode.
    void valuesOutliveTheProcessInAFileOfTheOwner()
    {
        QFETCH(QString, link);
        const QString file = QSettings().fileName();
        QFile::remove(file);
        const QString target = QFileInfo(file).dir().filePath(link);
        QFile::remove(target);
        const QFile::Permissions readable = QFile::ReadOwner | QFile::WriteOwner | QFile::ReadOther;
        if (!link.isEmpty()) {
            QVERIFY(QFile::link(target, file));
            QFile other(target);
            if (link == "target.conf")
                QVERIFY(other.open(QIODevice::WriteOnly) && other.write("not ours\n") == 9
                        && other.setPermissions(readable));
        }
        // Mode 0600: Qt names the owner's bits twice, as the owner's and as this user's.
        const QFile::Permissions ownerOnly =
                QFile::ReadOwner | QFile::WriteOwner | QFile::ReadUser | QFile::WriteUser;
        m_manager->setBVTDeviceId("written-here");
        QCOMPARE(QFile::permissions(file), ownerOnly);
        QVERIFY(!QFileInfo(file).isSymLink());
        QVERIFY(QFile::setPermissions(file, readable));
        m_manager->setBVTUserId(7);
        QCOMPARE(QFile::permissions(file), ownerOnly);
        QCOMPARE(storeInAnotherProcess(), QStringList({"written-here", "7", QString()}));
        if (link.isEmpty())
            return;
        QFile other(target);
        const auto removeTarget = qScopeGuard([&other] { other.remove(); });
        QCOMPARE(other.open(QIODevice::ReadOnly) ? other.readAll() : QByteArray(),
                 link == "target.conf" ? QByteArray("not ours\n") : QByteArray());
        if (other.exists())
            QCOMPARE(other.permissions() & ~(QFile::ReadUser | QFile::WriteUser), readable);
    }

    void onlyFailedWritesAreLoggedAndTheyAreKept_data()
    {
        QTest::addColumn<bool>("directoryInTheWay"); // else a file that cannot be parsed
        QTest::newRow("directory in the way") << true;
        QTest::newRow("file with a format problem") << false;
    }

    void onlyFailedWritesAreLoggedAndTheyAreKept()
    {
        QFETCH(bool, directoryInTheWay);

        // A directory where the settings file should be makes every write fail, even for root. A
        // file with a format problem is read, then replaced by the write.
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
        // Two reads of a file that cannot be read: one log line.
        QVERIFY(m_manager->currentDevice().isNull() && m_manager->currentDevice().isNull());
        if (directoryInTheWay)
            QVERIFY(QDir().rmdir(file));
        m_manager->setBVTDeviceToken("AB"); // also writes what an earlier write could not

        // A file that cannot be read is said once, not at every read.
        const QStringList failures{"Failed to save settings to " + file + ": access error",
                                   "Failed to read settings from " + file + ": access error"};
        QCOMPARE(m_log->linesStartingWith("Failed"), directoryInTheWay ? failures : QStringList());
        QCOMPARE(QSettings(file, QSettings::IniFormat).value(userKey).toString(), "kept");
    }

    void entryThatCannotBeDecodedIsAbsent_data()
    {
        QTest::addColumn<QByteArray>("settings"); // the settings file
        QTest::addColumn<QString>("read");        // null: absent, so the device registers
        const QByteArray key = "com.brevanti.ios.BVTDeviceId=";
        const auto entry = [&key](const QByteArray &value) { return "[General]\n" + key + value; };
        // What the store writes for a string UTF-8 cannot carry, cut in its middle.
        const QString unpaired = QChar(0xD800) + QStringLiteral("x");
        m_manager->setBVTUserId(unpaired);
        QFile file(QSettings().fileName());
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QByteArray content = file.readAll();
        const qsizetype start = content.indexOf('=', content.indexOf("BVTUserId"));
        const QByteArray whole = content.mid(start + 1, content.indexOf('\n', start) - start - 1);
        QVERIFY(whole.startsWith("@Variant(") && whole.endsWith(')'));
        // Its type's name kept, the text's length and units gone.
        QTest::newRow("binary form cut short") << entry(
                whole.left(whole.indexOf("Utf16Text") + int(qstrlen("Utf16Text\\0"))) + ")")
                                               << QString();
        QTest::newRow("binary form without its end")
                << entry(whole.left(whole.size() - 8)) << QString();
        const QByteArray cutString = R"(@Variant(\0\0\0\n))";
        QTest::newRow("string in binary form, cut short") << entry(cutString) << QString();
        // The same key in another group is another entry.
        QTest::newRow("cut short in another group")
                << "[Other]\n" + key + cutString + "\n" + entry("kept") << "kept";
    }

    // An entry written in the binary form and cut short reads as absent, not as an empty or garbled
    // identifier, so the device registers again instead of never.
    void entryThatCannotBeDecodedIsAbsent()
    {
        QFETCH(QByteArray, settings);
        QFETCH(QString, read);
        QFile file(QSettings().fileName());
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(settings + "\n");
        file.close();
        QCOMPARE(m_manager->currentDevice(), read);
        QCOMPARE(m_manager->currentDevice().isNull(), read.isNull());
        m_manager->initDevice();
        QTRY_VERIFY(m_local->nothingUnderWay());
        QCOMPARE(m_local->requestsFor("/devices").size(), read.isNull() ? 1 : 0);
        if (read.isNull())
            QCOMPARE(m_manager->currentDevice(), m_local->service().deviceIds().constLast());
    }

    void fullDiskKeepsTheFileAndTheValues_data()
    {
        QTest::addColumn<int>("free"); // bytes left on the file system
        QTest::newRow("nothing free") << 0;
        QTest::newRow("4 KiB free") << 4096;
    }

    // On a file system that cannot hold the new file, the old one stays as it was, the failure is
    // logged, the values stay pending, and the next write that fits saves them.
    void fullDiskKeepsTheFileAndTheValues()
    {
        QFETCH(int, free);
        QTemporaryDir disk;
        if (::mount("tmpfs", QFile::encodeName(disk.path()), "tmpfs", 0, "size=64k") != 0)
            QSKIP(qPrintable("No small file system can be mounted here (it takes root): "
                             + QString::fromLocal8Bit(std::strerror(errno))));
        const QString home = QFileInfo(QFileInfo(QSettings().fileName()).path()).path();
        QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, disk.path());
        const auto restore = qScopeGuard([&] {
            QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, home);
            ::umount2(QFile::encodeName(disk.path()), MNT_DETACH);
        });
        const QString file = QSettings().fileName();
        const auto contents = [&file] {
            QFile settings(file);
            return settings.open(QIODevice::ReadOnly) ? settings.readAll() : QByteArray();
        };
        // The host keeps its own settings in the same file, which makes it larger than a page.
        QSettings().setValue("host/notes", QString(6000, 'n'));
        m_manager->setBVTDeviceToken("AA");
        const QByteArray before = contents();
        QVERIFY(file.startsWith(disk.path()) && before.contains("AA"));

        QFile filler(disk.filePath("filler"));
        QVERIFY(filler.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
        while (filler.write(QByteArray(4096, 'f')) == 4096) { }
        QVERIFY(filler.resize(filler.size() - free));
        LogCapture::clear();
        m_manager->setBVTDeviceToken("BB");
        QCOMPARE(m_log->linesStartingWith("Failed"),
                 QStringList{"Failed to save settings to " + file + ": short write"});
        QCOMPARE(contents(), before);
        QCOMPARE(m_manager->currentDeviceToken(), "BB");
        QCOMPARE(QDir(QFileInfo(file).path()).entryList(QDir::Files | QDir::Hidden),
                 QStringList{QFileInfo(file).fileName()});
        QVERIFY(filler.remove());
        QVERIFY(bvt::UserDefaults::standardUserDefaults().synchronize()); // what was pending
        m_manager->setBVTUserId("user-2"); // also writes the token still pending
        const QByteArray after = contents();
        QVERIFY(after.contains("user-2") && after.contains("BB")
                && after.contains(QByteArray(6000, 'n')));
    }

private:
    std::unique_ptr<LocalService> m_local;
    std::unique_ptr<LogCapture> m_log;
    std::shared_ptr<BVTManager> m_manager; // reads and writes the store directly
};

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
