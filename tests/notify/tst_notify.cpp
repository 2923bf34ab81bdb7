#include "localservice.h"
#include "notify/preferencedocument.h"
#include "outcomes.h"
#include "standinoperatingsystem.h"

#include <Brevanti/BVT.h>
#include <Brevanti/BVTNotify.h>
#include <Brevanti/Client.h>

#include <QtTest>

class TestNotify : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase()
    {
        QCoreApplication::setOrganizationName("BrevantiTests");
        QStandardPaths::setTestModeEnabled(true);
        m_local = std::make_unique<LocalService>();
        m_system.install();
        m_log = std::make_unique<LogCapture>();
    }

    void init()
    {
        QTRY_VERIFY(m_local->nothingUnderWay()); // what an earlier test started has ended
        QSettings().clear();                     // the identifiers and the token
        m_local->reset();
        m_system.clear();
        LogCapture::clear();
    }

    void nothingIsSentWithoutADevice()
    {
        // The registration never completes, so no device identifier is ever stored.
        m_local->service().setFault("POST", "/devices", bvtsim::Fault::drop());
        BVT::initWithLaunchOptions({}, LocalService::clientId, LocalService::clientSecret);
        m_log->clear();

        Outcomes outcomes;
        BVTNotify::enableDevice(QByteArray("\x01"), outcomes.success());
        BVTNotify::verifyPushEnabled(outcomes.success(), outcomes.failure());
        BVTNotify::getPreferences(outcomes.success(), outcomes.failure());
        BVTNotify::enablePreferenceWithCategory("news", "breaking", outcomes.success(),
                                                outcomes.failure());
        BVTNotify::disablePreferenceWithCategory(QString(), QString()); // logged, not thrown
        BVT::assignDeviceToUser("u", outcomes.success(), outcomes.failure());
        BVT::assignDeviceToUser(QString()); // logged, not thrown
        BVT::unassignDevice(outcomes.success(), outcomes.failure());
        // The client's replies say so instead.
        bvt::Client *client = bvt::Client::instance();
        QList<int> errors;
        for (bvt::Reply *reply : {client->assignDeviceToUser("u"), client->unassignDevice(),
                                  client->enableDevice("AB"), client->fetchPreferences(),
                                  client->setPreferenceEnabled("news", "daily_digest", false)})
            reply->then(client, [&errors](bvt::Reply *reply) { errors << reply->error(); });
        QCOMPARE(m_log->lines(), QStringList(13, "You have not fired initWithLaunchOptions yet!"));
        QTRY_VERIFY(m_local->nothingUnderWay());
        QCOMPARE(m_local->requestsFor("/devices").size(), 1); // sent and dropped, never again
        QCOMPARE(m_local->service().requests().size(), 2);    // and a token for it
        QCOMPARE(outcomes.count(), 0);
        QTRY_COMPARE(errors, QList<int>(5, bvt::Reply::NotRegisteredError));
        QVERIFY(m_system.requests().isEmpty());
    }

    // The token goes as text (a string as it is, anything else as its bytes in hex) and is stored
    // only once the service accepted it, before success runs.
    void enableSendsTheTokenAndStoresItOnceAccepted_data()
    {
        QTest::addColumn<QVariant>("token"); // as the system hands it over
        QTest::addColumn<QString>("text");   // as sent
        QTest::addColumn<bvtsim::Fault>("fault");
        const QVariant bytes = QByteArray("\x00\x0F\xCA\xFE", 4); // a zero byte, a small one
        // To a route that answers any method with 200.
        const auto redirected =
                bvtsim::Fault::answer(302, "moved", "text/html").withHeader("Location", "/echo");
        QTest::newRow("bytes") << bytes << "000FCAFE" << bvtsim::Fault();
        QTest::newRow("string as it is") << QVariant("abc") << "abc" << bvtsim::Fault();
        QTest::newRow("nil: empty, never absent") << QVariant() << "" << bvtsim::Fault();
        QTest::newRow("neither: read as bytes") << QVariant(42) << "3432" << bvtsim::Fault();
        QTest::newRow("dropped: the earlier kept") << bytes << "000FCAFE" << bvtsim::Fault::drop();
        QTest::newRow("redirected: the earlier kept") << bytes << "000FCAFE" << redirected;
    }

    void enableSendsTheTokenAndStoresItOnceAccepted()
    {
        QFETCH(QVariant, token);
        QFETCH(QString, text);
        QFETCH(bvtsim::Fault, fault);

        registerDevice();
        BVT::setCurrentDeviceToken("EARLIER");
        m_local->service().setFault("PATCH", "/devices/enable", fault);
        Outcomes outcomes;
        QString stored; // when success runs
        const auto success = [&](const QVariant &answer) {
            outcomes.answers << answer;
            stored = BVT::currentDeviceToken();
        };
        BVTNotify::enableDevice(token, success, outcomes.failure());
        QTRY_VERIFY(m_local->nothingUnderWay());
        const bool accepted = !fault.replacesAnswer();
        QCOMPARE(stored, accepted ? text : QString());
        QCOMPARE(outcomes.texts.size(), accepted ? 0 : 1);
        QCOMPARE(outcomes.answers.value(0).toMap()["device"].toMap()["push_token"].toString(),
                 accepted ? text : QString());
        QCOMPARE(BVT::currentDeviceToken(), accepted ? text : QString("EARLIER"));
        const auto sent = m_local->requestsFor("/devices/enable"); // once, never followed
        QCOMPARE(sent.size(), 1);
        QCOMPARE(sent.first().body,
                 "device[token]=" + text.toUtf8()
                         + "&device[uuid]=" + BVT::currentDevice().toUtf8());
        QVERIFY(m_local->requestsFor("/echo").isEmpty());
        QCOMPARE(m_log->linesStartingWith("Got"), QStringList{"Got device token " + text});
    }

    void changesGoToTheUserWhenAssignedAndFetchesToTheDevice()
    {
        registerDevice();
        const QString device = BVT::currentDevice();
        Outcomes outcomes;
        BVT::assignDeviceToUser("u 1", outcomes.success(), nullptr);
        QTRY_VERIFY(m_local->nothingUnderWay());
        // The digest is off already, so the document is the same whichever is answered first.
        BVTNotify::disablePreferenceWithCategory("news", "daily_digest", outcomes.success());
        BVTNotify::getPreferences(outcomes.success(), outcomes.failure());
        QTRY_VERIFY(m_local->nothingUnderWay());
        QCOMPARE(outcomes.answers.size(), 3);
        const QVariantList document = m_local->service().preferenceDocument(device).toVariantList();
        QVERIFY(outcomes.answers.contains(document));
        QCOMPARE(m_local->requestsFor("/preferences/disable").first().body,
                 QByteArray("category=news&preference=daily_digest&user[identifier]=u%201"));
        QCOMPARE(m_local->requestsFor("/preferences").first().query,
                 "device[uuid]=" + device.toUtf8());
    }

    // Every change is followed by one verify: without a token it asks for push permission, with one
    // it logs the token. Nil keys throw before anything is sent or verified.
    void everyChangeIsFollowedByOneVerify()
    {
        BVTNotify::requestPushPermissions(); // asked for in any state, no device needed
        QCOMPARE(m_system.requests(), QStringList({"settings:7", "remote"}));
        QCOMPARE(m_log->lines(), QStringList{"requestPushPermissions"});

        registerDevice();
        m_local->service().setFault("PATCH", "/preferences/disable", bvtsim::Fault::status(500));
        Outcomes outcomes; // a change that failed is verified too
        BVTNotify::disablePreferenceWithCategory("orders", "shipping", outcomes.success(),
                                                 outcomes.failure());
        QTRY_VERIFY(m_local->nothingUnderWay());
        QCOMPARE(m_system.remoteRegistrations(), 2);
        BVT::setCurrentDeviceToken("00FF");
        QVERIFY_THROWS_EXCEPTION(std::invalid_argument,
                                 BVTNotify::enablePreferenceWithCategory(QString(), "breaking"));
        QVERIFY_THROWS_EXCEPTION(std::invalid_argument,
                                 BVTNotify::disablePreferenceWithCategory("news", QString()));
        BVTNotify::enablePreferenceWithCategory("news", "daily_digest", outcomes.success());
        BVTNotify::verifyPushEnabled(outcomes.success(), outcomes.failure()); // never called back
        BVTNotify::verifyPushEnabled(outcomes.success());
        BVTNotify::verifyPushEnabled();
        QTRY_VERIFY(m_local->nothingUnderWay());
        QCOMPARE(m_log->linesStartingWith("Verified"), QStringList(4, "Verified token 00FF"));
        QCOMPARE(m_system.remoteRegistrations(), 2);
        QCOMPARE(outcomes.texts.size(), 1);
        QCOMPARE(outcomes.answers.size(), 1);
        QCOMPARE(m_local->service().requests().size(), 2); // the two changes
        QCOMPARE(m_local->requestsFor("/preferences/enable").first().body,
                 "category=news&device[uuid]=" + BVT::currentDevice().toUtf8()
                         + "&preference=daily_digest");
    }

    void documentModelReadsTheFetchedDocument_data()
    {
        QTest::addColumn<QByteArray>("document");
        QTest::addColumn<QString>("read");

        QTest::newRow("as meant")
                << QByteArray(R"([{"name":"News","key":"news","preferences":[
                {"name":"Breaking","key":"breaking","enabled":true},{"name":"Digest","key":"digest",
                "enabled":0}]},{"name":"Orders","key":"orders","preferences":[]}])")
                << "News:news(Breaking:breaking=1,Digest:digest=0) Orders:orders()";
        QTest::newRow("enabled readings")
                << QByteArray(R"([{"name":"C","key":"c","preferences":[
                {"key":"a","enabled":1.5},{"key":"b","enabled":0.5},{"key":"c","enabled":-2},
                {"key":"d","enabled":" +7 days"},{"key":"e","enabled":"true"},{"key":"f","enabled":null},
                {"key":"g"},{"key":"h","enabled":[1]},{"key":"i","enabled":"  "}]}])")
                << "C:c(~:a=1,~:b=0,~:c=1,~:d=1,~:e=0,~:f=0,~:g=0,~:h=0,~:i=0)";
        QTest::newRow("texts from numbers, empty kept") << QByteArray(
                R"([{"name":42,"key":true,"preferences":[{"name":1.5,"key":"","enabled":1},
                {"name":{"x":1},"key":null,"enabled":1}]}])")
                                                        << "42:1(1.5:=1,~:~=1)";
        QTest::newRow("neither object nor list")
                << QByteArray(
                           R"([17,"text",null,[],{"preferences":"many"},{"preferences":[3,{}]}])")
                << "~:~() ~:~() ~:~() ~:~() ~:~() ~:~(~:~=0,~:~=0)";
    }

    void documentModelReadsTheFetchedDocument()
    {
        QFETCH(QByteArray, document);
        QFETCH(QString, read);

        const QVariantList decoded = QJsonDocument::fromJson(document).toVariant().toList();
        // The model's reading in one line: "name:key(preferences)" per category, "name:key=enabled"
        // per preference, "~" for a null text.
        const auto text = [](const QString &value) { return value.isNull() ? "~" : value; };
        const auto summary = [&text](const bvt::PreferenceDocument &model) {
            QStringList categories;
            for (const bvt::PreferenceCategory &c : model.categories()) {
                QStringList preferences;
                for (const bvt::Preference &p : c.preferences)
                    preferences << text(p.name) + ':' + text(p.key) + '='
                                    + QString::number(p.enabled);
                categories << text(c.name) + ':' + text(c.key) + '(' + preferences.join(',') + ')';
            }
            return categories.join(' ');
        };

        // A second load is appended behind the first, as the screens show every fetch.
        bvt::PreferenceDocument model;
        model.append(decoded);
        model.append(decoded);
        QCOMPARE(summary(model), read + ' ' + read);
        QCOMPARE(model.decoded(), decoded + decoded);
    }

private:
    void registerDevice()
    {
        BVT::initWithLaunchOptions({}, LocalService::clientId, LocalService::clientSecret);
        QTRY_VERIFY(m_local->nothingUnderWay());
        QVERIFY(!BVT::currentDevice().isNull());
        m_local->reset();
        m_log->clear();
    }

    std::unique_ptr<LocalService> m_local;
    std::unique_ptr<LogCapture> m_log;
    bvtstandin::StandInOperatingSystem m_system;
};

QTEST_GUILESS_MAIN(TestNotify)

#include "tst_notify.moc"
