#include "service.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QProcess>
#include <QSignalSpy>
#include <QTcpSocket>
#include <QtTest>

using namespace bvtsim;

Q_DECLARE_METATYPE(bvtsim::Fault)

struct Result
{
    int status = 0;
    QNetworkReply::NetworkError error = QNetworkReply::NoError;
    QByteArray body, contentType;
    QList<QNetworkReply::RawHeaderPair> headers;
};

class tst_Sim : public QObject
{
    Q_OBJECT

    std::unique_ptr<Service> service;
    std::unique_ptr<QNetworkAccessManager> nam;
    const QDateTime start = QDateTime(QDate(2024, 3, 1), QTime(12, 0), Qt::UTC);
    QByteArray bearer; // issued by init() at the start
    const QByteArray goodGrant = "grant_type=client_credentials&scope=brevanti-sdk";
    const QByteArray goodDevice = "device[os]=iOS&device[os_version]=17.4&device[model]=iP%2C2"
                                  "&device[manufacturer]=Apple";

    static QJsonObject parse(const QByteArray &b) { return QJsonDocument::fromJson(b).object(); }
    static QByteArray basic(const QString &user) { return "Basic " + user.toLatin1().toBase64(); }

    // A null auth sends no Authorization header.
    Result send(const QByteArray &target, const QByteArray &body = {}, const QByteArray &auth = {},
                const QByteArray &verb = "POST")
    {
        QNetworkRequest request(QUrl::fromEncoded(service->baseUrl().toEncoded() + target));
        request.setHeader(QNetworkRequest::ContentTypeHeader, "application/x-www-form-urlencoded");
        request.setRawHeader("Authorization", auth);
        std::unique_ptr<QNetworkReply> reply(nam->sendCustomRequest(request, verb, body));
        QSignalSpy finished(reply.get(), &QNetworkReply::finished);
        if (!reply->isFinished() && !finished.wait())
            reply->abort();
        return {reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt(), reply->error(),
                reply->readAll(), reply->rawHeader("Content-Type"), reply->rawHeaderPairs()};
    }

private Q_SLOTS:
    void init()
    {
        service = std::make_unique<Service>();
        QVERIFY(service->listen());
        service->addClient("app", "s3cret");
        service->setClock(start);
        nam = std::make_unique<QNetworkAccessManager>();
        const Result issued = send("/oauth/token", goodGrant, basic("app:s3cret"));
        bearer = "Bearer " + parse(issued.body)["access_token"].toString().toLatin1();
    }

    void token_data()
    {
        QTest::addColumn<QByteArray>("authorization"); // null: none
        QTest::addColumn<QByteArray>("form");
        QTest::addColumn<int>("status");
        QTest::addColumn<QString>("error");
        const QByteArray app = basic("app:s3cret"), good = goodGrant;
        QTest::newRow("good") << app << good << 200 << QString();
        QTest::newRow("wrong secret") << basic("app:guess") << good << 401 << "invalid_client";
        QTest::newRow("unknown client") << basic("who:s3cret") << good << 401 << "invalid_client";
        QTest::newRow("no authorization") << QByteArray() << good << 401 << "invalid_client";
        QTest::newRow("wrong grant") << app << QByteArray("grant_type=password&scope=brevanti-sdk")
                                     << 400 << "unsupported_grant_type";
        QTest::newRow("no scope") << app << QByteArray("grant_type=client_credentials") << 400
                                  << "invalid_scope";
    }
    void token()
    {
        QFETCH(QByteArray, authorization);
        QFETCH(QByteArray, form);
        QFETCH(int, status);
        QFETCH(QString, error);
        const Result result = send("/oauth/token", form, authorization);
        QCOMPARE(result.status, status);
        QJsonObject json = parse(result.body);
        QCOMPARE(json.value("error").toString(), error);
        QCOMPARE(json.take("access_token").toString().isEmpty(), status != 200);
        if (status == 200) // and exactly three more members
            QCOMPARE(QJsonDocument(json).toJson(QJsonDocument::Compact),
                     R"({"created_at":1709294400,"expires_in":7200,"token_type":"bearer"})");
    }

    void bearerCheck_data()
    {
        QTest::addColumn<QString>("auth"); // "fresh": the token init() issued
        QTest::addColumn<int>("secondsLater");
        QTest::addColumn<int>("status");
        QTest::newRow("last valid second") << "fresh" << 7199 << 200;
        QTest::newRow("expired") << "fresh" << 7200 << 401;
        QTest::newRow("missing") << QString() << 0 << 401;
        QTest::newRow("unknown") << "Bearer 0123456789abcdef0123456789abcdef" << 0 << 401;
    }
    void bearerCheck()
    {
        QFETCH(QString, auth);
        QFETCH(int, secondsLater);
        QFETCH(int, status);
        service->setClock(start.addSecs(secondsLater));
        const Result result = send("/echo", {}, auth == "fresh" ? bearer : auth.toLatin1());
        QCOMPARE(result.status, status);
        QCOMPARE(parse(result.body)["error"].toString(), status == 401 ? "invalid_token" : "");
    }

    // Sent as query and as form body: recorded byte for byte, decoded in the answer.
    void echo_data()
    {
        QTest::addColumn<QString>("encoded");
        QTest::addColumn<QJsonObject>("decoded");
        QTest::newRow("plus and %2B") << "b=x+y&p=%2B" << parse(R"({"b":"x y","p":"+"})");
        QTest::newRow("repeated key") << "a=1&a=2&a=3&s" << parse(R"({"a":["1","2","3"],"s":""})");
        QTest::newRow("escapes") << "c=%C3%A9&d%5B%5D=%2F%25" << parse(R"({"c":"é","d[]":"/%"})");
    }
    void echo()
    {
        QFETCH(QString, encoded);
        QFETCH(QJsonObject, decoded);
        const QByteArray bytes = encoded.toLatin1();
        const Result result = send("/echo?" + bytes, bytes, bearer);
        QCOMPARE(result.status, 200);
        QCOMPARE(parse(result.body)["query"].toObject(), decoded);
        QCOMPARE(parse(result.body)["form"].toObject(), decoded);
        QCOMPARE(service->requests().last().query, bytes);
        QCOMPARE(service->requests().last().body, bytes);
    }

    void faults_data()
    {
        // Fault{delayMs, status, body, contentType, dropConnection, truncateBody, times}
        QTest::addColumn<Fault>("fault");
        QTest::addColumn<int>("status"); // 0: no answer
        const QByteArray busy = R"({"error":"busy"})";
        QTest::newRow("status and body") << Fault{0, 503, busy, {}, false, false, -1} << 503;
        QTest::newRow("times=1") << Fault{0, 503, busy, {}, false, false, 1} << 503;
        QTest::newRow("content type") << Fault{0, 0, {}, "text/html", false, false, -1} << 200;
        QTest::newRow("drop") << Fault{0, 0, {}, {}, true, false, -1} << 0;
        QTest::newRow("truncate") << Fault{0, 0, {}, {}, false, true, -1} << 200; // body cut short
    }
    void faults()
    {
        QFETCH(Fault, fault);
        QFETCH(int, status);
        service->setFault("*", "/echo", fault);
        const Result result = send("/echo", {}, bearer);
        QCOMPARE(result.status, status);
        const QByteArray type = fault.contentType.isNull() ? "application/json" : fault.contentType;
        QCOMPARE(result.contentType, status ? type : QByteArray());
        QCOMPARE(result.error == QNetworkReply::RemoteHostClosedError,
                 fault.dropConnection || fault.truncateBody);
        if (!fault.body.isNull())
            QCOMPARE(result.body, fault.body);
        QCOMPARE(send("/echo", {}, bearer).status, fault.times == 1 ? 200 : status); // then
    }

    void devices_data()
    {
        QTest::addColumn<QByteArray>("request"); // verb, path, form; UUID: a device of user "u-1"
        QTest::addColumn<int>("status");
        QTest::addColumn<QString>("problem"); // the "error", or the "message" of a missing_field
        QTest::addColumn<QJsonValue>("user"); // afterwards, of the device answered, else of UUID
        const QByteArray reg = "POST /devices ", as = "PATCH /devices/assign device[uuid]=",
                         un = "PATCH /devices/unassign device[uuid]=";
        const QJsonValue u1("u-1"), u2("u 2"), null(QJsonValue::Null);
        QTest::newRow("register") << reg + goodDevice << 201 << "" << null;
        QTest::newRow("register, no model") << reg + "device[os]=iOS&device[os_version]=1" << 422
                                            << "device[model] is missing" << u1;
        QTest::newRow("assign") << as + "UUID&user[identifier]=u%202" << 200 << "" << u2;
        QTest::newRow("assign, no user")
                << as + "UUID&user[identifier]=" << 422 << "user[identifier] is missing" << u1;
        QTest::newRow("assign, unknown")
                << as + "gone&user[identifier]=u-2" << 404 << "device_not_found" << u1;
        QTest::newRow("unassign") << un + "UUID" << 200 << "" << null;
        QTest::newRow("unassign, no uuid") << un << 422 << "device[uuid] is missing" << u1;
        QTest::newRow("unassign, unknown") << un + "gone" << 404 << "device_not_found" << u1;
        const QByteArray en = "PATCH /devices/enable device[uuid]=";
        QTest::newRow("enable") << en + "UUID&device[token]=t%2B1" << 200 << "" << u1;
        QTest::newRow("enable, empty token") << en + "UUID&device[token]=" << 200 << "" << u1;
        QTest::newRow("enable, no token") << en + "UUID" << 422 << "device[token] is missing" << u1;
        QTest::newRow("enable, unknown")
                << en + "gone&device[token]=" << 404 << "device_not_found" << u1;
    }
    void devices()
    {
        QFETCH(QByteArray, request);
        QFETCH(int, status);
        QFETCH(QString, problem);
        QFETCH(QJsonValue, user);
        QTemporaryDir dir;
        service->setStateFile(dir.filePath("state.json"));
        send("/devices", goodDevice, bearer);
        const QByteArray known = service->deviceIds().value(0).toLatin1();
        send("/devices/assign", "device[uuid]=" + known + "&user[identifier]=u-1", bearer, "PATCH");
        const QList<QByteArray> parts = request.replace("UUID", known).split(' ');
        const Result result = send(parts[1], parts[2], bearer, parts[0]);
        QCOMPARE(result.status, status);
        const QJsonObject json = parse(result.body), answered = json["device"].toObject();
        QCOMPARE(json[json["error"] == "missing_field" ? "message" : "error"].toString(), problem);
        const QString uuid = status < 300 ? answered["uuid"].toString() : QString(known);
        QCOMPARE(service->device(uuid).value("user"), user);
        for (auto it = answered.begin(); it != answered.end(); ++it) // as stored
            QCOMPARE(service->device(uuid).value(it.key()), it.value());
        if (answered.contains("push_token")) // decoded as sent, even when empty
            QCOMPARE(answered["push_token"], QUrl::fromPercentEncoding(parts[2].split('=').last()));
        QCOMPARE(service->deviceIds(), QStringList({known, uuid}).mid(0, status == 201 ? 2 : 1));
        if (status == 201) // the four fields, under a fresh lower-case uuid without braces
            QCOMPARE(answered,
                     parse(QString(R"({"manufacturer":"Apple","model":"iP,2","os":"iOS",)"
                                   R"("os_version":"17.4","uuid":"%1"})")
                                   .arg(QUuid(uuid).toString(QUuid::WithoutBraces))
                                   .toUtf8()));
        Service again; // knows every change from the state file
        again.setStateFile(dir.filePath("state.json"));
        QCOMPARE(again.deviceIds(), service->deviceIds());
        QCOMPARE(again.device(uuid), service->device(uuid));
    }

    // A state file is the service's own or a new one; anything else is left alone, and the
    // executable refuses to start on it with the same message.
    void stateFile_data()
    {
        QTest::addColumn<QString>("name");       // in a fresh directory
        QTest::addColumn<QByteArray>("content"); // null: no such file
        QTest::addColumn<bool>("accepted");
        const QByteArray own = R"({"devices":{},"tokens":{"ab":1}})";
        QTest::newRow("new file") << "state.json" << QByteArray() << true;
        QTest::newRow("empty file") << "state.json" << QByteArray("") << true;
        QTest::newRow("its own") << "state.json" << own << true;
        QTest::newRow("catalogue") << "state.json" << QByteArray(R"([{"key":"news"}])") << false;
        QTest::newRow("other object")
                << "state.json" << QByteArray(R"({"tokens":{},"x":1})") << false;
        QTest::newRow("not JSON") << "state.json" << QByteArray("tokens=1") << false;
        QTest::newRow("missing directory") << "gone/state.json" << QByteArray() << false;
    }
    void stateFile()
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
        QCOMPARE(send("/devices", goodDevice, bearer).status, 201); // a change to save
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
        QSignalSpy finished(&sim, &QProcess::finished);
        if (!finished.wait())
            sim.kill();
        QCOMPARE(sim.exitCode(), 1);
        QVERIFY2(sim.readAllStandardError().contains(message.toUtf8()), qPrintable(message));
        QCOMPARE(file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray(), content);
    }

    void preferences_data()
    {
        QTest::addColumn<QByteArray>("requests"); // in turn, the last answering; UUID: the device
        QTest::addColumn<int>("status");
        QTest::addColumn<QString>("problem"); // the "error", or the "message" of a missing_field
        QTest::addColumn<bool>("enabled");    // "breaking", in the device's document afterwards
        const QByteArray off = "PATCH /preferences/disable category=news&preference=breaking&",
                         on = "PATCH /preferences/enable category=news&preference=breaking&",
                         as = "PATCH /devices/assign device[uuid]=UUID&user[identifier]=u-1\n",
                         d = "device[uuid]=UUID", u = "user[identifier]=u-1";
        QTest::newRow("device off") << off + d << 200 << "" << false;
        QTest::newRow("device off, user on") << off + d + "\n" + as + on + u << 200 << "" << true;
        QTest::newRow("user off") << as + off + u << 200 << "" << false;
        QTest::newRow("user off, unassigned")
                << as + "PATCH /devices/unassign " + d + "\n" + off + u << 200 << "" << true;
        QTest::newRow("no category") << QByteArray(off).replace("category=news&", "") + d << 422
                                     << "category is missing" << true;
        QTest::newRow("other category's") << QByteArray(off).replace("news", "offers") + d << 404
                                          << "preference_not_found" << true;
        QTest::newRow("no addressee") << off << 422 << "device[uuid] is missing" << true;
        QTest::newRow("both") << as + off + d + "&" + u << 422 << "ambiguous_addressee" << true;
        QTest::newRow("unknown user") << off + u << 404 << "user_not_found" << true;
        QTest::newRow("get, no uuid")
                << QByteArray("GET /preferences") << 422 << "device[uuid] is missing" << true;
    }
    void preferences()
    {
        QFETCH(QByteArray, requests);
        QFETCH(int, status);
        QFETCH(QString, problem);
        QFETCH(bool, enabled);
        const QString shape = R"([{"key":"offers","preferences":[]},{"key":"news","preferences":)"
                              R"([{"enabled":%1,"key":"breaking"},{"enabled":false,"key":"x"}]}])";
        QJsonArray doc[2]; // with "breaking" disabled, enabled
        for (const bool on : {false, true})
            doc[on] = QJsonDocument::fromJson(shape.arg(on ? "true" : "false").toUtf8()).array();
        QVERIFY(!service->catalogue().isEmpty() && service->setCatalogue(doc[true])); // built in
        QTemporaryDir dir;
        service->setStateFile(dir.filePath("state.json"));
        send("/devices", goodDevice, bearer);
        const QByteArray uuid = service->deviceIds().value(0).toLatin1();
        QList<QByteArray> parts;
        Result result;
        for (const QByteArray &line : requests.replace("UUID", uuid).split('\n')) {
            parts = line.split(' ');
            result = send(parts[1], parts.value(2), bearer, parts[0]);
        }
        QCOMPARE(result.status, status);
        const QJsonObject json = parse(result.body);
        QCOMPARE(json[json["error"] == "missing_field" ? "message" : "error"].toString(), problem);
        if (status == 200 && parts[1].startsWith("/preferences/"))
            QCOMPARE(json,
                     parse(R"({"category":"news","preference":"breaking","enabled":)"
                           + QByteArray(parts[1].endsWith("/enable") ? "true}" : "false}")));
        const Result got = send("/preferences?device[uuid]=" + uuid, {}, bearer, "GET");
        QCOMPARE(QJsonDocument::fromJson(got.body).array(), doc[enabled]);
        Service again; // the states come back from the state file
        again.setStateFile(dir.filePath("state.json"));
        QVERIFY(again.setCatalogue(doc[true]));
        QCOMPARE(again.preferenceDocument(uuid), doc[enabled]);
    }

    // A long run keeps the most recent requests, each body cut to the limit, and no expired token.
    void boundedMemory()
    {
        service->setRequestLimit(2);
        service->setRecordedBodyLimit(4);
        QObject context;
        QByteArrayList signalled; // the request each signal's index names, as the signal comes
        connect(service.get(), &Service::requestRecorded, &context,
                [&](int index) { signalled << service->requests().at(index).body; });
        Result last;
        for (const QByteArray body : {"a=1", "a=22", "a=333"})
            last = send("/echo", body, bearer);
        QCOMPARE(parse(last.body)["form"].toObject()["a"], "333"); // the route saw it all
        QCOMPARE(signalled, QByteArrayList({"a=1", "a=22", "a=33"}));
        QByteArrayList kept;
        for (const RecordedRequest &request : service->requests())
            kept << request.body;
        QCOMPARE(kept, QByteArrayList({"a=22", "a=33"}));

        QTemporaryDir dir;
        QVERIFY(service->setStateFile(dir.filePath("state.json")));
        service->setClock(start.addSecs(7200)); // init()'s token has just expired
        const Result issued = send("/oauth/token", goodGrant, basic("app:s3cret"));
        QFile state(dir.filePath("state.json"));
        QVERIFY(state.open(QIODevice::ReadOnly));
        QCOMPARE(parse(state.readAll())["tokens"].toObject().keys(),
                 QStringList{parse(issued.body)["access_token"].toString()});
    }

    // A connection ends after the answer its client asked to be the last, after a request whose
    // length cannot be trusted, or once no byte has moved for the idle time-out.
    void connectionEnds_data()
    {
        QTest::addColumn<int>("idleMs");        // 0: no time-out
        QTest::addColumn<QByteArray>("sent");   // BEARER: init()'s token
        QTest::addColumn<QByteArray>("answer"); // the status line's start; empty: none
        const QByteArray get = "GET /echo HTTP/1.1\r\nHost: sim\r\nAuthorization: BEARER\r\n",
                         post = QByteArray(get).replace("GET", "POST"), ok = "HTTP/1.1 200",
                         bad = "HTTP/1.1 400", close = "Connection: close\r\n\r\n";
        QTest::newRow("Connection: close") << 0 << get + close << ok;
        QTest::newRow("length -1") << 0 << post + "Content-Length: -1\r\n\r\na=1" << bad;
        QTest::newRow("two lengths")
                << 0 << post + "Content-Length: 3\r\nContent-Length: 7\r\n\r\na=1&b=2" << bad;
        QTest::newRow("length and chunked")
                << 0 << post + "Content-Length: 3\r\nTransfer-Encoding: chunked\r\n\r\n0\r\n\r\n"
                << bad;
        QTest::newRow("silent") << 100 << QByteArray() << QByteArray();
        QTest::newRow("half a request") << 100 << get.left(20) << QByteArray();
        QTest::newRow("body cut short")
                << 100 << post + "Content-Length: 9\r\n\r\na=1" << QByteArray();
        QTest::newRow("answer held past it") // by a fault: the client is not the idle one
                << 100 << QByteArray(get).replace("/echo", "/slow") + close
                << QByteArray("HTTP/1.1 404");
    }
    void connectionEnds()
    {
        QFETCH(int, idleMs);
        QFETCH(QByteArray, sent);
        QFETCH(QByteArray, answer);
        service->setIdleTimeout(std::chrono::milliseconds(idleMs));
        service->setFault("GET", "/slow", Fault{300, 0, {}, {}});
        QTcpSocket socket;
        socket.connectToHost(QHostAddress::LocalHost, service->port());
        socket.write(sent.replace("BEARER", bearer));
        QTRY_COMPARE(socket.state(), QAbstractSocket::UnconnectedState);
        QCOMPARE(socket.readAll().left(12), answer);
    }

    // The admin routes, over the socket: never recorded, never bearer-checked.
    void admin()
    {
        const auto admin = [this](const QByteArray &verb, const QByteArray &route,
                                  const QByteArray &json = {}) {
            return send("/_sim/" + route, json, {}, verb);
        };
        QCOMPARE(admin("GET", "requests").status, 401); // off: an ordinary path
        service->setAdminEnabled(true);
        service->clearRequests();
        const QByteArray fault = R"({"method":"GET","path":"/echo","status":503,"times":1,)"
                                 R"("headers":{"Retry-After":"7"}})";
        QCOMPARE(admin("POST", "faults", fault).status, 204);
        QCOMPARE(admin("POST", "faults", R"({"path":"/echo","delay":5})").status, 400);
        const Result faulted = send("/echo?a=1", {}, bearer, "GET");
        QCOMPARE(faulted.status, 503);
        QVERIFY(faulted.headers.contains({"Retry-After", "7"}));
        const Result listed = admin("GET", "requests");
        const QJsonArray requests = QJsonDocument::fromJson(listed.body).array();
        QCOMPARE(requests.size(), 1);
        QCOMPARE(requests[0]["path"], "/echo");
        QCOMPARE(requests[0]["query"], "a=1");
        QCOMPARE(admin("DELETE", "requests").status, 204);
        QVERIFY(service->requests().isEmpty());
        QCOMPARE(admin("POST", "faults", QByteArray(fault).replace(R"("times":1,)", "")).status,
                 204);
        QCOMPARE(admin("DELETE", "faults").status, 204);
        QCOMPARE(send("/echo", {}, bearer, "GET").status, 200);
    }

    void connectionNumbering()
    {
        QCOMPARE(send("/echo", {}, bearer).status, 200);
        nam = std::make_unique<QNetworkAccessManager>();
        QCOMPARE(send("/echo", {}, bearer).status, 200);
        QCOMPARE(service->requests().value(1).connection, 1); // 0 is init()'s token request
        QCOMPARE(service->requests().value(2).connection, 2);
        QCOMPARE(service->connectionCount(), 2);
    }
};

QTEST_GUILESS_MAIN(tst_Sim)
#include "tst_sim.moc"
