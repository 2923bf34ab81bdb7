#include "localservice.h"
#include "logcapture.h"

#include "client/origin.h"
#include "core/userdefaults.h"

#include <Brevanti/BVT.h>
#include <Brevanti/BVTManager.h>

#include <QCoreApplication>
#include <QFile>
#include <QProcess>
#include <QScopeGuard>
#include <QSslCertificate>
#include <QSslConfiguration>
#include <QSslKey>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

const QStringList newKey{"-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1", "-nodes"};

// The library talks to the service over HTTPS and accepts only the certificates the host trusts.
class TestTls : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void certificateDecides_data();
    void certificateDecides();

private:
    QString path(const QString &name) const { return m_dir.filePath(name); }
    bool openssl(const QStringList &arguments) const;
    bool signedByTestCa(const QString &name, const QString &subjectAltName) const;

    QTemporaryDir m_dir;
};

bool TestTls::openssl(const QStringList &arguments) const
{
    QProcess process;
    process.setWorkingDirectory(m_dir.path());
    process.start(QStringLiteral("openssl"), arguments);
    if (process.waitForFinished() && process.exitStatus() == QProcess::NormalExit
        && process.exitCode() == 0)
        return true;
    qWarning().noquote() << "openssl" << arguments.join(' ')
                         << "failed:" << process.readAllStandardError();
    return false;
}

// NAME.crt and NAME.key; the extension goes through a file, the one way older openssl takes it.
bool TestTls::signedByTestCa(const QString &name, const QString &subjectAltName) const
{
    QFile extensions(path(name + ".ext"));
    if (!extensions.open(QIODevice::WriteOnly)
        || extensions.write("subjectAltName=" + subjectAltName.toLatin1() + "\n") < 0
        || !extensions.flush())
        return false;
    return openssl(QStringList{"req", "-new"} + newKey
                   + QStringList{"-keyout", name + ".key", "-out", name + ".csr", "-subj",
                                 "/CN=" + name})
            && openssl({"x509", "-req", "-in", name + ".csr", "-CA", "ca.crt", "-CAkey", "ca.key",
                        "-set_serial", QString::number(qHash(name)), "-days", "2", "-extfile",
                        name + ".ext", "-out", name + ".crt"});
}

void TestTls::initTestCase()
{
    if (QStandardPaths::findExecutable(QStringLiteral("openssl")).isEmpty())
        QSKIP("the openssl command makes the test certificates");
    QVERIFY(m_dir.isValid());
    QVERIFY(openssl(QStringList{"req", "-x509"} + newKey
                    + QStringList{"-keyout", "ca.key", "-out", "ca.crt", "-days", "2", "-subj",
                                  "/CN=Brevanti Test CA", "-addext",
                                  "basicConstraints=critical,CA:TRUE", "-addext",
                                  "keyUsage=critical,keyCertSign"}));
    QVERIFY(signedByTestCa("server", "IP:127.0.0.1,DNS:localhost"));
    QVERIFY(signedByTestCa("elsewhere", "DNS:elsewhere.example"));
    QVERIFY(openssl(QStringList{"req", "-x509"} + newKey
                    + QStringList{"-keyout", "self.key", "-out", "self.crt", "-days", "2", "-subj",
                                  "/CN=127.0.0.1", "-addext",
                                  "subjectAltName=IP:127.0.0.1,DNS:localhost"}));
}

void TestTls::certificateDecides_data()
{
    QTest::addColumn<QString>("certificate"); // the service's, NAME.crt and NAME.key
    QTest::addColumn<bool>("trustTestCa");
    QTest::addColumn<bool>("tokenHeld");
    QTest::addColumn<QString>("outcome"); // the one callback or log line there is

    QTest::newRow("trusted CA") << "server" << true << false << "success";
    QTest::newRow("CA not trusted") << "server" << false << false << "no token";
    QTest::newRow("other name") << "elsewhere" << true << false << "no token";
    QTest::newRow("self-signed") << "self" << true << false << "no token";
    QTest::newRow("self-signed, token held") << "self" << true << true << "failure";
}

void TestTls::certificateDecides()
{
    QFETCH(QString, certificate);
    QFETCH(bool, trustTestCa);
    QFETCH(bool, tokenHeld);
    QFETCH(QString, outcome);

    bvtsim::Service service;
    service.addClient(LocalService::clientId, LocalService::clientSecret);
    QFile key(path(certificate + ".key"));
    QVERIFY(key.open(QIODevice::ReadOnly));
    QVERIFY(service.listenTls(QSslCertificate::fromPath(path(certificate + ".crt")).value(0),
                              QSslKey(&key, QSsl::Ec)));
    QCOMPARE(service.baseUrl().scheme(), "https");

    // The library builds its own requests, which take the process-wide default configuration.
    const QSslConfiguration original = QSslConfiguration::defaultConfiguration();
    bvtsim::LoopbackRouter router(QUrl(bvt::serviceOrigin()), service.baseUrl());
    bvt::setNetworkAccessManager(&router);
    const auto restore = qScopeGuard([&original] {
        QSslConfiguration::setDefaultConfiguration(original);
        bvt::setNetworkAccessManager(nullptr);
    });
    if (trustTestCa) {
        QSslConfiguration trusting = original;
        trusting.addCaCertificates(QSslCertificate::fromPath(path("ca.crt")));
        QSslConfiguration::setDefaultConfiguration(trusting);
    }

    LogCapture log;
    auto manager = BVTManager::initWithLaunchOptions({}, LocalService::clientId,
                                                     LocalService::clientSecret);
    if (tokenHeld) {
        manager->setAccess_token(QStringLiteral("held"));
        manager->setAccess_token_expires(QDateTime::currentDateTimeUtc().addDays(1));
    }
    QVariantList responses;
    QStringList texts;
    manager->getUrl(
            "/echo", {{"a", "1"}}, [&](const QVariant &answer) { responses.append(answer); },
            [&](const QString &answer) { texts.append(answer); });
    const QString tokenFailure = QStringLiteral("Failed to get access token: ");
    QTRY_COMPARE(responses.size() + texts.size() + log.linesStartingWith(tokenFailure).size(), 1);
    QTest::qWait(50); // room for a wrongly repeated callback or log line

    QCOMPARE(responses.size(), int(outcome == "success"));
    QCOMPARE(texts.size(), int(outcome == "failure"));
    QCOMPARE(log.linesStartingWith(tokenFailure).size(), int(outcome == "no token"));
    if (!texts.isEmpty())
        QVERIFY2(texts.first().isNull(), qPrintable(texts.first())); // no answer came
    if (!responses.isEmpty())
        QCOMPARE(responses.first().toMap().value("query").toMap().value("a").toString(), "1");
    // Every attempt reached the service; a refused one never got as far as a request.
    QVERIFY(service.connectionCount() > 0);
    QCOMPARE(service.requests().isEmpty(), responses.isEmpty());
    for (const bvtsim::RecordedRequest &request : service.requests())
        QVERIFY(request.connection >= 1 && request.connection <= service.connectionCount());
}

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setOrganizationName("BrevantiTests");
    QStandardPaths::setTestModeEnabled(true);
    // A device registered before, so that the manager's registration leaves the service alone.
    bvt::UserDefaults::standardUserDefaults().setObject(
            QStringLiteral("registered-device"), QStringLiteral("com.brevanti.ios.BVTDeviceId"));
    TestTls test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_tls.moc"
