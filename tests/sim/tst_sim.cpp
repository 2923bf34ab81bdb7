#include "service.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QProcess>
#include <QTcpSocket>
#include <QtTest>

#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>

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

    // A regular file's bytes, or the type of any other node at path; null when there is none.
    static QByteArray held(const QString &path)
    {
        struct stat status = {};
        if (::lstat(QFile::encodeName(path).constData(), &status) != 0)
            return QByteArray();
        QFile file(path);
        if (!S_ISREG(status.st_mode) || !file.open(QIODevice::ReadOnly))
            return "node of type " + QByteArray::number(status.st_mode & S_IFMT, 8);
        return file.readAll();
    }

    // Sends raw bytes on a new connection, with BEARER and PORT filled in.
    void send(QTcpSocket &socket, QByteArray bytes) const
    {
        socket.connectToHost(QHostAddress::LocalHost, service->port());
        socket.write(bytes.replace("BEARER", bearer)
                             .replace("PORT", QByteArray::number(service->port())));
    }

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
    void init()
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
    // executable refuses to start on it with the same message: status 1, or 2 for a node that is
    // not a regular file.
    void stateFile_data()
    {
        QTest::addColumn<QString>("name");       // in a fresh directory
        QTest::addColumn<QByteArray>("content"); // null: no such file
        QTest::addColumn<int>("node");           // non-zero: a node of this type instead of a file
        QTest::addColumn<int>("exitCode");       // of the executable on it; 0: it starts
        const QByteArray own = R"({"devices":{},"tokens":{"ab":1}})";
        QTest::newRow("new file") << "state.json" << QByteArray() << 0 << 0;
        QTest::newRow("its own") << "state.json" << own << 0 << 0;
        QTest::newRow("catalogue") << "state.json" << QByteArray(R"([{"key":"news"}])") << 0 << 1;
        QTest::newRow("not JSON") << "state.json" << QByteArray("tokens=1") << 0 << 1;
        QTest::newRow("missing directory") << "gone/state.json" << QByteArray() << 0 << 1;
        QTest::newRow("character device") << "null" << QByteArray() << int(S_IFCHR) << 2;
        QTest::newRow("FIFO") << "fifo" << QByteArray() << int(S_IFIFO) << 2;
    }

    void stateFile()
    {
        QFETCH(QString, name);
        QFETCH(QByteArray, content);
        QFETCH(int, node);
        QFETCH(int, exitCode);
        QTemporaryDir dir;
        const QString path = dir.filePath(name);
        QFile file(path);
        if (node
            && ::mknod(QFile::encodeName(path).constData(), mode_t(node) | 0600, makedev(1, 3)))
            QSKIP("Making a device node needs root.");
        if (!content.isNull())
            QVERIFY(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
        file.close();
        const QByteArray before = held(path);
        QByteArray refusal;
        if (exitCode != 0) { // first, so that a start that waits on the node ends the test
            QProcess sim;
            sim.start(BREVANTI_SIM, {"--port", "0", "--client", "a:b", "--state", path});
            QVERIFY(sim.waitForFinished()); // it refuses at once
            QCOMPARE(sim.exitCode(), exitCode);
            refusal = sim.readAllStandardError();
            QCOMPARE(held(path), before);
        }
        QString message;
        QCOMPARE(service->setStateFile(path, &message), exitCode == 0);
        QVERIFY2(refusal.contains(message.toUtf8()), qPrintable(message));
        QCOMPARE(post("/devices", goodDevice, bearer).first, 201); // a change to save
        if (exitCode == 0) {
            QCOMPARE(parse(held(path))["devices"].toObject().keys(), service->deviceIds());
            // It holds live tokens, so only its owner may read it: mode 0600, in Qt's nibbles.
            QCOMPARE(QString::number(int(QFile::permissions(path)), 16), "6600");
        } else {
            QVERIFY(!message.isEmpty());
            QCOMPARE(held(path), before);
        }
    }

    // A change that cannot be saved whole is answered 503 and undone, and the file keeps the last
    // whole state.
    void stateFileOnFullDisk()
    {
        QTemporaryDir dir;
        const QByteArray mountPoint = QFile::encodeName(dir.path());
        if (::mount("tmpfs", mountPoint.constData(), "tmpfs", 0, "size=64k") != 0)
            QSKIP("Mounting a small tmpfs to fill needs root.");
        const auto unmount = qScopeGuard([&] { ::umount2(mountPoint.constData(), MNT_DETACH); });
        // Two pages, and four once rewritten indented; one page is left free.
        QJsonArray users;
        for (int i = 0; i < 1000; ++i)
            users.append(QString::number(i));
        const QByteArray own =
                QJsonDocument(
                        {{"tokens", QJsonObject()}, {"devices", QJsonObject()}, {"users", users}})
                        .toJson(QJsonDocument::Compact);
        QFile state(dir.filePath("state.json")), filler(dir.filePath("filler"));
        QVERIFY(state.open(QIODevice::WriteOnly) && state.write(own) == own.size());
        state.close();
        QVERIFY(filler.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
        while (filler.write(QByteArray(4096, 'x')) == 4096) { }
        QVERIFY(filler.resize(filler.size() - 4096));

        QVERIFY(service->setStateFile(state.fileName()));
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("cannot write state file .* undone"));
        QCOMPARE(post("/devices", goodDevice, bearer).first, 503);
        QCOMPARE(service->deviceIds(), QStringList());
        QCOMPARE(held(state.fileName()), own);
    }

    // A connection ends after the answer its client asked to be the last, after a request whose
    // length cannot be trusted or that brings more than the limits, or once no byte has moved for
    // the idle time-out.
    void connectionEnds_data()
    {
        QTest::addColumn<int>("idleMs"); // 0: no time-out
        // BEARER: init()'s token; TRICKLE: header lines follow one at a time, never the blank line
        QTest::addColumn<QByteArray>("sent");
        QTest::addColumn<QByteArray>("answer"); // the status line's start; empty: none
        const auto row = [](const char *name, int idleMs, const QByteArray &sent, int status) {
            QTest::newRow(name) << idleMs << sent
                                << (status ? "HTTP/1.1 " + QByteArray::number(status)
                                           : QByteArray());
        };
        const QByteArray get = "GET /echo HTTP/1.1\r\nHost: sim\r\nAuthorization: BEARER\r\n",
                         post = QByteArray(get).replace("GET", "POST"),
                         close = "Connection: close\r\n\r\n";
        row("Connection: close", 0, get + close, 200);
        row("length -1", 0, post + "Content-Length: -1\r\n\r\na=1", 400);
        row("two lengths", 0, post + "Content-Length: 3\r\nContent-Length: 7\r\n\r\na=1&b=2", 400);
        row("silent", 100, {}, 0);
        row("body cut short", 100, post + "Content-Length: 9\r\n\r\na=1", 0);
        // By a fault: the client is not the idle one.
        row("answer held past it", 100, QByteArray(get).replace("/echo", "/slow") + close, 404);
        row("header section over the limit", 0,
            get + "X-Pad: " + QByteArray(4096, 'a') + "\r\n" + close, 431);
        row("body over the limit", 0, post + "Content-Length: 65\r\n\r\n", 413);
        row("header lines trickled", 0, get + "TRICKLE", 408);
    }

    void connectionEnds()
    {
        QFETCH(int, idleMs);
        QFETCH(QByteArray, sent);
        service->setIdleTimeout(std::chrono::milliseconds(idleMs));
        service->setHeaderLimit(4096);
        service->setBodyLimit(64);
        service->setHeaderTimeout(std::chrono::milliseconds(300));
        service->setFault("GET", "/slow", Fault::delay(std::chrono::milliseconds(300)));
        QTcpSocket socket;
        QTimer trickle;
        connect(&trickle, &QTimer::timeout, &socket, [&socket] { socket.write("X-Slow: 1\r\n"); });
        connect(&socket, &QAbstractSocket::disconnected, &trickle, &QTimer::stop);
        if (sent.endsWith("TRICKLE"))
            trickle.start(20);
        send(socket, sent.replace("TRICKLE", ""));
        QTRY_COMPARE(socket.state(), QAbstractSocket::UnconnectedState);
        QTEST(socket.readAll().left(12), "answer");
    }

    // The admin routes answer the machine itself: no name rebound to loopback, no web page of
    // another origin. They take no fault that would break the head of an answer, and show no
    // credentials.
    void admin_data()
    {
        QTest::addColumn<QByteArray>("sent");   // PORT: the service's
        QTest::addColumn<QByteArray>("answer"); // a part of it
        const auto row = [](const char *name, const char *target, const QByteArray &headers,
                            const QByteArray &json, const QByteArray &answer) {
            QTest::newRow(name) << target + QByteArray(" HTTP/1.1\r\n") + headers
                            + "Content-Length: " + QByteArray::number(json.size())
                            + "\r\nConnection: close\r\n\r\n" + json
                                << answer;
        };
        const QByteArray local = "Host: 127.0.0.1:PORT\r\n",
                         fault = R"({"path":"/echo","status":500})", forbidden = "HTTP/1.1 403",
                         invalid = "HTTP/1.1 400", done = "HTTP/1.1 204";
        row("rebound name", "GET /_sim/requests", "Host: rebound.example:PORT\r\n", {}, forbidden);
        row("no Host", "GET /_sim/requests", "", {}, forbidden);
        row("page elsewhere", "POST /_sim/faults",
            local + "Origin: https://site.example\r\nContent-Type: text/plain\r\n", fault,
            forbidden);
        row("inspector, rebound name", "GET /_sim/inspector", "Host: rebound.example:PORT\r\n", {},
            forbidden);
        row("inspector switch from elsewhere", "POST /_sim/preferences",
            local + "Origin: http://site.example\r\n", R"({"owner":"user"})", forbidden);
        row("inspector page", "GET /_sim/inspector", local, {},
            "Content-Security-Policy: default-src 'self'");
        row("loopback names", "DELETE /_sim/faults",
            "Host: LocalHost:PORT\r\nOrigin: http://[::1]:PORT\r\n", {}, done);
        row("CR LF in a header value", "POST /_sim/faults", local,
            R"({"path":"/echo","headers":{"X-A":"1\r\nSet-Cookie: a=b"}})", invalid);
        // init()'s token request
        row("credentials masked", "GET /_sim/requests", local, {},
            R"(["Authorization","Basic ***"])");
    }

    void admin()
    {
        QFETCH(QByteArray, sent);
        QFETCH(QByteArray, answer);
        service->setAdminEnabled(true);
        QTcpSocket socket;
        send(socket, sent);
        QTRY_COMPARE(socket.state(), QAbstractSocket::UnconnectedState);
        const QByteArray received = socket.readAll();
        QVERIFY2(received.contains(answer), received.constData());
    }

    // Once the record passes its bound on bytes it drops the oldest requests first.
    void recordBound()
    {
        service->setRequestByteLimit(25000);
        for (const char c : {'a', 'b', 'c'}) // about 10 kB each; init()'s token request went first
            QCOMPARE(post("/echo", QByteArray(10000, c), bearer).first, 200);
        QByteArray kept;
        for (const RecordedRequest &request : service->requests())
            kept += request.body.left(1);
        QCOMPARE(kept, "bc");
    }
};

QTEST_GUILESS_MAIN(tst_Sim)
#include "tst_sim.moc"
