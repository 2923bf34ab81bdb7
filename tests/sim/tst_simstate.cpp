#include "state.h"
#include "statefile.h"

#include <QtTest>

using namespace bvtsim;

// The service's state on its own, without a socket.
class tst_SimState : public QObject
{
    Q_OBJECT

    const QDateTime start = QDateTime::fromSecsSinceEpoch(1700000000, Qt::UTC);
    const QJsonObject phone{{"os", "iOS"}, {"model", "iPhone15,2"}};

    // News' first preference, breaking news, is on by default in the built-in catalogue.
    static bool breaking(const QJsonArray &document)
    {
        return document[1]["preferences"][0]["enabled"].toBool();
    }

private Q_SLOTS:
    // A device keeps its own states apart from its user's, and is served the user's while it has
    // one.
    void preferencesAreKeptApart_data()
    {
        QTest::addColumn<Holder>("switched");
        QTest::addColumn<bool>("assigned");
        QTest::addColumn<bool>("served"); // "breaking", switched off, as the device is served it
        QTest::newRow("device's, user assigned") << Holder::Device << true << true;
        QTest::newRow("device's, unassigned") << Holder::Device << false << false;
        QTest::newRow("user's, user assigned") << Holder::User << true << false;
        QTest::newRow("user's, unassigned") << Holder::User << false << true;
    }

    void preferencesAreKeptApart()
    {
        QFETCH(Holder, switched);
        QFETCH(bool, assigned);
        ServiceState state;
        const QString uuid = state.registerDevice(phone, start);
        QVERIFY(state.assign(uuid, "ann"));
        if (!assigned)
            QVERIFY(state.unassign(uuid));
        QCOMPARE(state.device(uuid)["user"], assigned ? QJsonValue("ann") : QJsonValue());
        const QString id = switched == Holder::Device ? uuid : "ann";
        QVERIFY(state.setPreference(switched, id, "news", "breaking", false));
        QVERIFY(!breaking(state.preferences(switched, id)));
        QVERIFY(breaking(switched == Holder::Device ? state.preferences(Holder::User, "ann")
                                                    : state.preferences(Holder::Device, uuid)));
        QTEST(breaking(state.preferenceDocument(uuid)), "served");
    }

    void tokensExpire_data()
    {
        QTest::addColumn<int>("later"); // seconds after the token was issued for 60
        QTest::addColumn<bool>("valid");
        QTest::newRow("at once") << 0 << true;
        QTest::newRow("last second") << 59 << true;
        QTest::newRow("at its expiry") << 60 << false;
    }

    void tokensExpire()
    {
        QFETCH(int, later);
        ServiceState state;
        const QByteArray token = state.issueToken(start, 60);
        QCOMPARE(state.tokens().first().expiry, start.addSecs(60));
        QTEST(state.tokenValid(token, start.addSecs(later)), "valid");
        state.dropExpiredTokens(start.addSecs(later));
        QTEST(!state.tokens().isEmpty(), "valid");
    }

    void stateSurvivesItsFile()
    {
        ServiceState state;
        const QString uuid = state.registerDevice(phone, start);
        QVERIFY(state.assign(uuid, "ann") && state.setPushToken(uuid, ""));
        QVERIFY(state.setPreference(Holder::User, "ann", "news", "breaking", false));
        state.issueToken(start, 60);
        QTemporaryDir dir;
        const QString path = dir.filePath("state.json");
        QVERIFY(writeStateFile(path, state.toJson(), nullptr));
        ServiceState loaded;
        loaded.load(readStateFile(path, nullptr).value());
        QCOMPARE(loaded.toJson(), state.toJson());
    }
};

QTEST_GUILESS_MAIN(tst_SimState)
#include "tst_simstate.moc"
