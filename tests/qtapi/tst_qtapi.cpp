#include "core/userdefaults.h"
#include "localservice.h"

#include <Brevanti/BVT.h>
#include <Brevanti/Client.h>

#include <QtTest>

using bvt::Client;
using bvt::Reply;
using bvtsim::Fault;

namespace {

const QString deviceKey = QStringLiteral("com.brevanti.ios.BVTDeviceId");

// How a reply ended, as its finished() handler saw it.
struct Ended
{
    int times = 0;
    Reply::Error error = Reply::NoError;
    int status = -1;
    QVariant answer;
    QString text;
    QString errorString;
    QString user; // the client's user when the reply finished
};

// Records each end of reply; the reply deletes itself afterwards, which pointer shows.
std::shared_ptr<Ended> watch(Reply *reply, QObject *context)
{
    auto ended = std::make_shared<Ended>();
    reply->then(context, [ended](Reply *reply) {
        *ended = {ended->times + 1,          reply->error(),      reply->httpStatus(),
                  reply->answer(),           reply->answerText(), reply->errorString(),
                  Client::instance()->user()};
    });
    return ended;
}

} // namespace

class TestQtApi : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase()
    {
        m_local = std::make_unique<LocalService>();
        m_client = Client::instance();
        // Registered anew with this service, which knows no device of an earlier run.
        bvt::UserDefaults::standardUserDefaults().removeObjectForKey(deviceKey);
        bvt::UserDefaults::standardUserDefaults().synchronize();
        QSignalSpy initialised(m_client, &Client::initialisedChanged);
        QVERIFY(!m_client->isInitialised());
        const auto ended = watch(
                m_client->initialise(LocalService::clientId, LocalService::clientSecret), this);
        QTRY_COMPARE(ended->times, 1);
        QCOMPARE(ended->error, Reply::NoError);
        QCOMPARE(initialised.size(), 1);
        QVERIFY(m_client->isInitialised() && !m_client->deviceId().isNull());
    }

    void init()
    {
        QTRY_VERIFY(m_local->nothingUnderWay());
        m_local->reset();
    }

    void everyCallFinishesOnce_data()
    {
        QTest::addColumn<QString>("call");
        QTest::addColumn<QString>("argument"); // a path, a user or a preference key
        QTest::addColumn<Fault>("fault");      // on every route
        QTest::addColumn<QString>("secret");
        QTest::addColumn<int>("error"); // Reply::Error
        QTest::addColumn<int>("status");
        QTest::addColumn<int>("sent"); // requests that reached the service, token requests included

        // The call is the first word of the row's name.
        const auto row = [](const char *name, const QString &argument, const Fault &fault,
                            Reply::Error error, int status, int sent,
                            const QString &secret = LocalService::clientSecret) {
            QTest::newRow(name) << QString(name).section(',', 0, 0) << argument << fault << secret
                                << int(error) << status << sent;
        };
        row("get, answered", "/echo", {}, Reply::NoError, 200, 2);
        row("assign, answered", "u1", {}, Reply::NoError, 200, 2);
        row("fetch, answered", "", {}, Reply::NoError, 200, 2);
        row("switch, answered", "breaking", {}, Reply::NoError, 200, 2);
        row("post, no token", "/echo", {}, Reply::NoAccessTokenError, 0, 1, "wrong");
        row("unassign, no token", "", {}, Reply::NoAccessTokenError, 0, 1, "wrong");
        row("patch, 404", "/echo", Fault::answer(404, "gone", "text/plain"), Reply::HttpStatusError,
            404, 2);
        row("enable, dropped", "", Fault::drop(), Reply::NetworkError, 0, 2);
        row("get, not JSON", "/echo", Fault::answer(200, "no", "text/plain"),
            Reply::InvalidAnswerError, 200, 2);
        row("assign, null user", QString(), {}, Reply::RefusedArgumentError, 0, 0);
        row("get, another host", "@127.0.0.1:1/x", {}, Reply::RefusedArgumentError, 0, 0);
    }

    // Whatever happens, each call's reply finishes exactly once, later than the call returned, and
    // then deletes itself; the error tells what happened, and the service saw what it should have.
    void everyCallFinishesOnce()
    {
        QFETCH(QString, call);
        QFETCH(QString, argument);
        QFETCH(Fault, fault);
        QFETCH(QString, secret);
        QFETCH(int, status);
        QFETCH(int, sent);

        // A new manager each time, so that each call fetches its token.
        BVT::initWithLaunchOptions({}, LocalService::clientId, secret);
        const auto restore = qScopeGuard([] {
            BVT::initWithLaunchOptions({}, LocalService::clientId, LocalService::clientSecret);
        });
        for (const QString path : {"/echo", "/devices/assign", "/devices/unassign",
                                   "/devices/enable", "/preferences", "/preferences/enable"})
            m_local->service().setFault("*", path, fault);

        Reply *reply = call == "get" ? m_client->get(argument, {{"a", "1"}})
                : call == "post"     ? m_client->post(argument)
                : call == "patch"    ? m_client->patch(argument)
                : call == "assign"   ? m_client->assignDeviceToUser(argument)
                : call == "unassign" ? m_client->unassignDevice()
                : call == "enable"   ? m_client->enableDevice(QByteArray("\x01\xab"))
                : call == "fetch"    ? m_client->fetchPreferences()
                                     : m_client->setPreferenceEnabled("news", argument, true);
        const QPointer<Reply> alive(reply);
        const auto ended = watch(reply, this);
        QCOMPARE(ended->times, 0);
        QTRY_VERIFY(alive.isNull());
        QVERIFY(m_local->nothingUnderWay());
        QCOMPARE(ended->times, 1);
        QTEST(int(ended->error), "error");
        QCOMPARE(ended->errorString.isEmpty(), ended->error == Reply::NoError);
        QCOMPARE(ended->status, status);
        QCOMPARE(ended->answer.isValid(), ended->error == Reply::NoError);
        if (ended->error == Reply::HttpStatusError)
            QCOMPARE(ended->text, QString::fromUtf8(fault.body));
        if (call == "assign" && ended->error == Reply::NoError) // stored before it finished
            QCOMPARE(ended->user, argument);
        QCOMPARE(m_local->service().requests().size(), sent);
    }

    void abortEndsTheCallWithoutAResult()
    {
        m_local->service().setFault("GET", "/echo", Fault::delay(std::chrono::milliseconds(200)));
        Reply *reply = m_client->get("/echo");
        const auto ended = watch(reply, this);
        reply->abort();
        reply->abort();
        QTRY_COMPARE(ended->times, 1);
        QCOMPARE(ended->error, Reply::AbortedError);
        QVERIFY(!ended->answer.isValid());
        QTRY_VERIFY(m_local->nothingUnderWay()); // the answer came, and was not reported
        QCOMPARE(ended->times, 1);
    }

private:
    std::unique_ptr<LocalService> m_local;
    Client *m_client = nullptr;
};

QTEST_GUILESS_MAIN(TestQtApi)

#include "tst_qtapi.moc"
