#include "service.h"
#include "statefile.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QSslCertificate>
#include <QSslKey>
#include <QTextStream>

#include <chrono>
#include <cstdlib>
#include <limits>
#include <optional>

namespace {

[[noreturn]] void fail(const QString &message, int status = EXIT_FAILURE)
{
    QTextStream(stderr) << "brevanti-sim: " << message << Qt::endl;
    std::exit(status);
}

QByteArray readFile(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        fail(QStringLiteral("cannot read %1: %2").arg(path, file.errorString()));
    return file.readAll();
}

// The value of option as a whole number from minimum up; the service's default when not given.
std::optional<qint64> number(const QCommandLineParser &parser, const QCommandLineOption &option,
                             qint64 minimum)
{
    if (!parser.isSet(option))
        return std::nullopt;
    bool ok = false;
    const qint64 value = parser.value(option).toLongLong(&ok);
    if (!ok || value < minimum || value > std::numeric_limits<int>::max())
        fail(QStringLiteral("--%1 wants a whole number from %2 up")
                     .arg(option.names().first())
                     .arg(minimum));
    return value;
}

QSslKey readKey(const QString &path)
{
    const QByteArray pem = readFile(path);
    // QSslKey needs the algorithm, which a PKCS#8 PEM file does not name.
    for (const QSsl::KeyAlgorithm algorithm : {QSsl::Rsa, QSsl::Ec}) {
        const QSslKey key(pem, algorithm);
        if (!key.isNull())
            return key;
    }
    fail(QStringLiteral("%1 holds no unencrypted PEM RSA or EC private key").arg(path));
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("brevanti-sim"));
    QCoreApplication::setApplicationVersion(QStringLiteral(BREVANTI_VERSION_STR));

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Local Brevanti service for tests and demos."));
    parser.addHelpOption();
    parser.addVersionOption();
    const QCommandLineOption portOption(
            QStringLiteral("port"),
            QStringLiteral("Port to listen on (default 0: a free one; the first line printed "
                           "names it)."),
            QStringLiteral("N"), QStringLiteral("0"));
    const QCommandLineOption clientOption(
            QStringLiteral("client"),
            QStringLiteral("Client allowed to ask for tokens; repeatable."),
            QStringLiteral("ID:SECRET"));
    const QCommandLineOption stateOption(
            QStringLiteral("state"),
            QStringLiteral("JSON file that keeps issued tokens and devices across runs; a regular "
                           "file or a new one (anything else: exit status 2)."),
            QStringLiteral("FILE"));
    const QCommandLineOption lifetimeOption(
            QStringLiteral("token-lifetime"),
            QStringLiteral("Lifetime of issued tokens (default 7200)."), QStringLiteral("SECONDS"));
    const QCommandLineOption hostOption(QStringLiteral("host"),
                                        QStringLiteral("Address to listen on, or localhost "
                                                       "(default 127.0.0.1)."),
                                        QStringLiteral("ADDRESS"), QStringLiteral("127.0.0.1"));
    const QCommandLineOption catalogueOption(
            QStringLiteral("catalogue"),
            QStringLiteral("JSON array of preference categories served instead of the built-in "
                           "one."),
            QStringLiteral("FILE"));
    const QCommandLineOption certificateOption(
            QStringLiteral("tls-cert"),
            QStringLiteral("PEM certificate (the first in FILE) to serve HTTPS with; needs "
                           "--tls-key."),
            QStringLiteral("FILE"));
    const QCommandLineOption keyOption(QStringLiteral("tls-key"),
                                       QStringLiteral("PEM private key of --tls-cert."),
                                       QStringLiteral("FILE"));
    const QCommandLineOption idleOption(
            QStringLiteral("idle-timeout"),
            QStringLiteral("Close a connection once no byte has moved on it for this long; 0 "
                           "never (default 30)."),
            QStringLiteral("SECONDS"));
    const QCommandLineOption requestLimitOption(
            QStringLiteral("request-limit"),
            QStringLiteral("Recorded requests kept, the most recent (default 10000)."),
            QStringLiteral("N"));
    const QCommandLineOption requestBytesOption(
            QStringLiteral("request-byte-limit"),
            QStringLiteral("Bytes the recorded requests may take in all, the most recent kept "
                           "(default 67108864)."),
            QStringLiteral("BYTES"));
    const QCommandLineOption bodyLimitOption(
            QStringLiteral("recorded-body-limit"),
            QStringLiteral("Bytes kept of each recorded request body (default 65536)."),
            QStringLiteral("BYTES"));
    const QCommandLineOption headerLimitOption(
            QStringLiteral("header-limit"),
            QStringLiteral("Largest request header section taken; a larger one gets 431 and the "
                           "connection is closed (default 65536)."),
            QStringLiteral("BYTES"));
    const QCommandLineOption acceptedBodyOption(
            QStringLiteral("body-limit"),
            QStringLiteral("Largest request body taken; a larger one gets 413 and the connection "
                           "is closed (default 1048576)."),
            QStringLiteral("BYTES"));
    const QCommandLineOption headerTimeoutOption(
            QStringLiteral("header-timeout"),
            QStringLiteral("Answer 408 and close the connection when a request's headers have "
                           "not all arrived this long after its first byte; 0 never (default "
                           "10)."),
            QStringLiteral("SECONDS"));
    const QCommandLineOption adminOption(
            QStringLiteral("admin"),
            QStringLiteral("Serve the admin routes under /_sim/ (faults, recorded requests) to "
                           "loopback clients."));
    const QCommandLineOption inspectOption(
            QStringLiteral("inspect"),
            QStringLiteral("Serve the admin routes and the inspector, a page at /_sim/inspector "
                           "that shows the devices, tokens, preferences and requests live, "
                           "switches preferences and sets faults, to loopback clients."));
    parser.addOptions({portOption, clientOption, stateOption, lifetimeOption, hostOption,
                       catalogueOption, certificateOption, keyOption, idleOption,
                       requestLimitOption, requestBytesOption, bodyLimitOption, headerLimitOption,
                       acceptedBodyOption, headerTimeoutOption, adminOption, inspectOption});
    parser.process(app);

    bool ok = false;
    const uint port = parser.value(portOption).toUInt(&ok);
    if (!ok || port > 65535)
        fail(QStringLiteral("--port wants N from 0 to 65535, got %1")
                     .arg(parser.value(portOption)));
    const QString hostName = parser.value(hostOption);
    const QHostAddress host = hostName == QLatin1String("localhost")
            ? QHostAddress(QHostAddress::LocalHost)
            : QHostAddress(hostName);
    if (host.isNull())
        fail(QStringLiteral("--host is not an IP address: %1").arg(parser.value(hostOption)));
    const QStringList clients = parser.values(clientOption);
    if (clients.isEmpty())
        fail(QStringLiteral("at least one --client ID:SECRET is required"));

    bvtsim::Service service;
    for (const QString &client : clients) {
        const qsizetype colon = client.indexOf(QLatin1Char(':'));
        if (colon <= 0)
            fail(QStringLiteral("--client wants ID:SECRET, got %1").arg(client));
        service.addClient(client.left(colon), client.mid(colon + 1));
    }
    if (const auto lifetime = number(parser, lifetimeOption, 1))
        service.setTokenLifetime(int(*lifetime));
    if (const auto idle = number(parser, idleOption, 0))
        service.setIdleTimeout(std::chrono::seconds(*idle));
    if (const auto limit = number(parser, requestLimitOption, 1))
        service.setRequestLimit(int(*limit));
    if (const auto limit = number(parser, requestBytesOption, 0))
        service.setRequestByteLimit(*limit);
    if (const auto limit = number(parser, bodyLimitOption, 0))
        service.setRecordedBodyLimit(*limit);
    if (const auto limit = number(parser, headerLimitOption, 1))
        service.setHeaderLimit(*limit);
    if (const auto limit = number(parser, acceptedBodyOption, 0))
        service.setBodyLimit(*limit);
    if (const auto timeout = number(parser, headerTimeoutOption, 0))
        service.setHeaderTimeout(std::chrono::seconds(*timeout));
    service.setAdminEnabled(parser.isSet(adminOption) || parser.isSet(inspectOption));
    if (parser.isSet(stateOption)) {
        const QString path = parser.value(stateOption);
        // A status of its own: a path that names a device or a FIFO is a mistake in the command.
        QString problem = bvtsim::stateFileTypeProblem(path);
        if (!problem.isEmpty())
            fail(problem, 2);
        if (!service.setStateFile(path, &problem))
            fail(problem);
    }
    if (parser.isSet(catalogueOption)) {
        const QString path = parser.value(catalogueOption);
        QJsonParseError parseError;
        const QJsonDocument document = QJsonDocument::fromJson(readFile(path), &parseError);
        if (parseError.error != QJsonParseError::NoError)
            fail(QStringLiteral("%1 is not JSON: %2").arg(path, parseError.errorString()));
        if (!document.isArray() || !service.setCatalogue(document.array()))
            fail(QStringLiteral("%1 is not a catalogue: an array of categories, each with a "
                                "unique \"key\" and a \"preferences\" array of uniquely keyed "
                                "objects")
                         .arg(path));
    }

    const bool tls = parser.isSet(certificateOption);
    if (tls != parser.isSet(keyOption))
        fail(QStringLiteral("--tls-cert and --tls-key go together"));
    bool listening = false;
    if (tls) {
        const QList<QSslCertificate> certificates =
                QSslCertificate::fromData(readFile(parser.value(certificateOption)));
        if (certificates.isEmpty())
            fail(QStringLiteral("%1 holds no PEM certificate")
                         .arg(parser.value(certificateOption)));
        listening = service.listenTls(certificates.first(), readKey(parser.value(keyOption)), host,
                                      quint16(port));
    } else {
        listening = service.listen(host, quint16(port));
    }
    if (!listening)
        fail(QStringLiteral("cannot listen on %1 port %2").arg(host.toString()).arg(port));
    // Launchers wait for this exact line to learn the port.
    QTextStream(stdout) << "brevanti-sim listening on " << service.baseUrl().toString() << Qt::endl;
    if (parser.isSet(inspectOption))
        QTextStream(stdout) << "brevanti-sim inspector at " << service.baseUrl().toString()
                            << "/_sim/inspector" << Qt::endl;
    return app.exec();
}
