#include "service.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QProcess>
#include <QTcpSocket>
#include <QtTest>

using namespace bvtsim;

class tst_Sim : public QObject
{
    Q_OBJECT

    std::unique_ptr<Service> service;
    std::unique_ptr<QNetworkAccessManager> nam;
    QByteArray bearer; // issued by init() at the start
    const QByteArray goodDevice = "device[os]=iOS&device[os_version]=17.4&device[model]=iP%2C2"
                                  "&device[manufacturer]=Apple";

    static QJsonObject parse(const QByteArray &b) { return QJsonDocument::fromJson(b).object(); }

    // Posts a form and answers the status and body.
    std::pair<int, QByteArray> post(const QByteArray &target, const QByteArray &body,
                                    const QByteArray &auth)
    {
        QNetworkRequest request(QUrl::fromEncoded(service->baseUrl().toEncoded() + target));
        request.setHeader(QNetworkRequest::ContentTypeHeader, "application/x-www-form-urlencoded");
        request.setRawHeader("Authorization", auth);
        std::unique_ptr<QNetworkReply> reply(nam->post(request, body));
        if (!QTest::qWaitFor([&reply] { return reply->isFinished(); }))
            return {0, "no answer"};
        return {reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt(),
                reply->readAll()};
    }

private Q_SLOTS:
    void init();
    void stateFile_data();
    void stateFile();
    void connectionEnds_data();
    void connectionEnds();
};

void tst_Sim::init()
{
    service = std::make_unique<Service>();
    QVERIFY(service->listen());
    service->addClient("app", "s3cret");
    nam = std::make_unique<QNetworkAccessManager>();
    const QByteArray issued =
            post("/oauth/token", "grant_type=client_credentials&scope=brevanti-sdk",
                 "Basic " + QByteArray("app:s3cret").toBase64())
                    .second;
    bearer = "Bearer " + parse(issued)["access_token"].toString().toLatin1();
}

// A state file is the service's own or a new one; anything else is left alone, and the
// executable refuses to start on it with the same message.
void tst_Sim::stateFile_data()
{
    QTest::addColumn<QString>("name");       // in a fresh directory
    QTest::addColumn<QByteArray>("content"); // null: no such file
    QTest::addColumn<bool>("accepted");
    const QByteArray own = R"({"devices":{},"tokens":{"ab":1}})";
    QTest::newRow("new file") << "state.json" << QByteArray() << true;
    QTest::newRow("empty file") << "state.json" << QByteArray("") << true;
    QTest::newRow("its own") << "state.json" << own << true;
    QTest::newRow("catalogue") << "state.json" << QByteArray(R"([{"key":"news"}])") << false;
    QTest::newRow("not JSON") << "state.json" << QByteArray("tokens=1") << false;
    QTest::newRow("missing directory") << "gone/state.json" << QByteArray() << false;
}

void tst_Sim::stateFile()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, content);
    QFETCH(bool, accepted);
    QTemporaryDir dir;
    const QString path = dir.filePath(name);
    QFile file(path);
    if (!content.isNull())
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
    file.close();
    QString message;
    QCOMPARE(service->setStateFile(path, &message), accepted);
    QCOMPARE(message.isEmpty(), accepted);
    QCOMPARE(post("/devices", goodDevice, bearer).first, 201); // a change to save
    const QByteArray saved = file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    file.close();
    if (accepted) {
        QCOMPARE(parse(saved)["devices"].toObject().keys(), service->deviceIds());
        // It holds live tokens, so only its owner may read it: mode 0600, in Qt's nibbles.
        QCOMPARE(QString::number(int(file.permissions()), 16), "6600");
        return;
    }
    QCOMPARE(saved, content); // untouched
    QProcess sim;
    sim.start(BREVANTI_SIM, {"--port", "0", "--client", "a:b", "--state", path});
    QVERIFY(sim.waitForFinished()); // it refuses at once
    QCOMPARE(sim.exitCode(), 1);
    QVERIFY2(sim.readAllStandardError().contains(message.toUtf8()), qPrintable(message));
    QCOMPARE(file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray(), content);
}

// A connection ends after the answer its client asked to be the last, after a request whose
// length cannot be trusted, or once no byte has moved for the idle time-out.
void tst_Sim::connectionEnds_data()
{
    QTest::addColumn<int>("idleMs");        // 0: no time-out
    QTest::addColumn<QByteArray>("sent");   // BEARER: init()'s token
    QTest::addColumn<QByteArray>("answer"); // the status line's start; empty: none
    const QByteArray get = "GET /echo HTTP/1.1\r\nHost: sim\r\nAuthorization: BEARER\r\n",
                     post = QByteArray(get).replace("GET", "POST"), ok = "HTTP/1.1 200",
                     bad = "HTTP/1.1 400", close = "Connection: close\r\n\r\n";
    QTest::newRow("Connection: close") << 0 << get + close << ok;
    QTest::newRow("length -1") << 0 << post + "Content-Length: -1\r\n\r\na=1" << bad;
    QTest::newRow("two lengths") << 0
                                 << post + "Content-Length: 3\r\nContent-Length: 7\r\n\r\na=1&b=2"
                                 << bad;
    QTest::newRow("length and chunked")
            << 0 << post + "Content-Length: 3\r\nTransfer-Encoding: chunked\r\n\r\n0\r\n\r\n"
            << bad;
    QTest::newRow("silent") << 100 << QByteArray() << QByteArray();
    QTest::newRow("body cut short") << 100 << post + "Content-Length: 9\r\n\r\na=1" << QByteArray();
    QTest::newRow("answer held past it") // by a fault: the client is not the idle one
            << 100 << QByteArray(get).replace("/echo", "/slow") + close
            << QByteArray("HTTP/1.1 404");
}

void tst_Sim::connectionEnds()
{
    QFETCH(int, idleMs);
    QFETCH(QByteArray, sent);
    service->setIdleTimeout(std::chrono::milliseconds(idleMs));
    service->setFault("GET", "/slow", Fault{300, 0, {}, {}});
    QTcpSocket socket;
    socket.connectToHost(QHostAddress::LocalHost, service->port());
    socket.write(sent.replace("BEARER", bearer));
    QTRY_COMPARE(socket.state(), QAbstractSocket::UnconnectedState);
    QTEST(socket.readAll().left(12), "answer");
}

QTEST_GUILESS_MAIN(tst_Sim)
#include "tst_sim.moc"
