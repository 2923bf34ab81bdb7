// The QML module in a QGuiApplication host: the widget screens that show nothing there,
// `import Brevanti`, the singletons' properties and callbacks (and a C++ host's, tied to its
// objects), the preferences model under a sectioned ListView, and the permission card in a Qt
// Quick window, against the local service and the stand-in operating system.
#include "localservice.h"
#include "logcapture.h"

#include "standinoperatingsystem.h"

#include <Brevanti/BVT.h>
#include <Brevanti/BVTNotify.h>
#include <Brevanti/Client.h>
#include <Brevanti/Reply.h>

#include <QtQuick>
#include <QtTest>

// The module is a static plugin: the host imports it, as linking alone registers nothing.
Q_IMPORT_QML_PLUGIN(BrevantiPlugin)

namespace {

// A host's page in miniature: bindings to the singleton BVT, the model in a sectioned list whose
// rows read "section:categoryKey:preferenceName:preferenceKey:enabled", and run(code), which runs a
// page's code with Brevanti, BVT, BVTNotify, the page and the test (test.record) in scope.
const QByteArray page = R"(
import QtQuick
import Brevanti
ListView {
    id: page
    required property QtObject test
    property string currentDevice: BVT.currentDevice
    property string currentUser: BVT.currentUser
    property string currentDeviceToken: BVT.currentDeviceToken
    height: 1000
    model: PreferencesModel {}
    section.property: "categoryName"
    delegate: Item {
        height: 1
        property string shown: [ListView.section, model.categoryKey, model.preferenceName,
                                model.preferenceKey, model.enabled].join(":")
    }

    function run(code) {
        return Function("Brevanti", "BVT", "BVTNotify", "page", "test", code)(
                    Brevanti, BVT, BVTNotify, page, test)
    }
    function rows() {
        forceLayout()
        return Array.from({length: count}, (_, row) => itemAtIndex(row).shown)
    }
})";

const QJsonArray catalogue = QJsonDocument::fromJson(R"([{"name": "News", "key": "news",
    "preferences": [{"name": "Breaking", "key": "breaking", "enabled": true},
                    {"name": "Digest", "key": "digest", "enabled": false}]},
    {"name": "Empty", "key": "empty", "preferences": []}, {"name": "Orders", "key": "orders",
    "preferences": [{"name": "Shipping", "key": "shipping", "enabled": 1}]}])")
                                     .array();

// The card's shown items, as a user finds them: by their text.
QList<QQuickItem *> itemsOf(QObject *card, const char *type, const QString &text = QString())
{
    QList<QQuickItem *> found, below{card->property("contentItem").value<QQuickItem *>()};
    while (!below.isEmpty()) {
        QQuickItem *item = below.takeFirst();
        if (item->inherits(type) && (text.isNull() || item->property("text") == text))
            found << item;
        if (item->isVisible())
            below << item->childItems();
    }

    return found;
}

void tap(QQuickItem *item)
{
    QVERIFY(item && item->isVisible());
    const QPointF centre = item->mapToScene({item->width() / 2, item->height() / 2});
    // Sent to the window directly: QTest's mouse functions end in qApp->processEvents(), and with
    // Qt Widgets' headers in this test qApp is a cast to a QApplication that this host lacks.
    for (const QEvent::Type type : {QEvent::MouseButtonPress, QEvent::MouseButtonRelease}) {
        QMouseEvent event(type, centre, item->window()->mapToGlobal(centre), Qt::LeftButton,
                          type == QEvent::MouseButtonPress ? Qt::LeftButton : Qt::NoButton, {});
        QCoreApplication::sendEvent(item->window(), &event);
    }
}

} // namespace

class TestQuick : public QObject
{
    Q_OBJECT
public:
    Q_INVOKABLE void record(const QVariant &value) { m_recorded.append(value); }

private Q_SLOTS:
    void initTestCase()
    {
        for (const char *key : {"BVTDeviceId", "BVTUserId", "BVTDeviceToken"})
            QSettings().remove(QStringLiteral("com.brevanti.ios.") + key);
        m_local = std::make_unique<LocalService>();
        QVERIFY(m_local->service().setCatalogue(catalogue));
        // The host's part: the token that the system hands over goes to the service.
        m_system.setTokenToHandOut(m_pushToken);
        connect(&m_system, &bvtstandin::StandInOperatingSystem::deviceTokenReceived,
                [](const QByteArray &token) { BVTNotify::enableDevice(token); });
        m_system.install();
        // Until the module's singleton is made, the widget screens say so here and show nothing.
        const char *line =
                "The library's screens need a QApplication (Qt Widgets); nothing is shown";
        QTest::ignoreMessage(QtWarningMsg, line);
        BVTNotify::requestCustomPreferences();
        QTest::ignoreMessage(QtWarningMsg, line);
        BVTNotify::openPreferencesWithNavigationController(nullptr);
        QVERIFY(QGuiApplication::topLevelWindows().isEmpty());
        showPage();
    }

    void init() { QTest::failOnWarning(QRegularExpression(".")); }

    void launchShowsTheDevice()
    {
        const QString start = R"(BVT.initWithLaunchOptions({}, "test-client", "test-secret"))";
        const QString deviceKey = QStringLiteral("com.brevanti.ios.BVTDeviceId");
        QCOMPARE(run("return Brevanti").value<QObject *>(),
                 bvt::Client::instance()); // the client itself
        QSignalSpy changes(bvtSingleton(), SIGNAL(currentDeviceChanged()));
        QSettings().setValue(deviceKey, "earlier");
        run(start); // a later launch: shown at once
        QCOMPARE(changes.count(), 1);
        QCOMPARE(m_page->property("currentDevice").toString(), "earlier");

        QSettings().remove(deviceKey);
        run(start); // a first launch: shown once registered
        QVERIFY(m_local->settledExchanges() > 0);
        QCOMPARE(changes.count(), 3);
        QCOMPARE(m_page->property("currentDevice").toString(), BVT::currentDevice());
        QCOMPARE(m_local->requestsFor("/devices").size(), 1);
    }

    void identifierChangesReachBindings_data()
    {
        QTest::addColumn<QString>("code");
        QTest::addColumn<QByteArray>("property");
        QTest::addColumn<QString>("value");
        QTest::addColumn<int>("changes");
        const auto row = [](const char *name, const QString &code, const char *property,
                            const char *value, int changes) {
            QTest::newRow(name) << code << QByteArray(property) << value << changes;
        };
        const char *user = "currentUser", *token = "currentDeviceToken";
        // In this order: each row starts where the one before ended.
        row("assigned", R"(BVT.assignDeviceToUser("reader"))", user, "reader", 1);
        row("unassigned", "BVT.unassignDevice()", user, "", 1);
        row("refused: a JS error",
            "try { BVT.assignDeviceToUser(null) } catch (e) { test.record(e.message) }", user, "",
            0);
        row("token accepted", R"(BVTNotify.enableDevice("CAFE"))", token, "CAFE", 1);
        row("token set", R"(BVT.setCurrentDeviceToken("BEEF"))", token, "BEEF", 1);
        row("same token again", R"(BVT.setCurrentDeviceToken("BEEF"))", token, "BEEF", 0);
        // The client's calls, whose replies QML reads when they finish: the error is recorded.
        const QString call = "const reply = Brevanti.%1\n"
                             "reply.finished.connect(() => test.record(reply.error))";
        row("client: refused", call.arg("assignDeviceToUser(null)"), user, "", 0);
        row("client: assigned", call.arg(R"(assignDeviceToUser("client-reader"))"), user,
            "client-reader", 1);
        row("client: unassigned", call.arg("unassignDevice()"), user, "", 1);
    }

    void identifierChangesReachBindings()
    {
        QFETCH(QString, code);
        QFETCH(QByteArray, property);

        m_recorded.clear();
        QSignalSpy spy(bvtSingleton(), "2" + property + "Changed()");
        run(code);
        QVERIFY(m_local->settledExchanges() >= 0);
        QTEST(int(spy.count()), "changes");
        QTEST(m_page->property(property).toString(), "value");
        // A refusal or a reply reached the page.
        QCOMPARE(m_recorded.size(), int(code.contains("catch") || code.contains("reply")));
        if (code.contains("reply"))
            QCOMPARE(m_recorded.constFirst().toInt(),
                     code.contains("null") ? bvt::Reply::RefusedArgumentError
                                           : bvt::Reply::NoError);
    }

    void callbacksGetTheAnswer_data()
    {
        QTest::addColumn<bvtsim::Fault>("fault");
        QTest::addColumn<bool>("engineGone");
        QTest::addColumn<QVariantList>("recorded");
        QTest::newRow("answer") << bvtsim::Fault() << false << QVariantList{"a b"};
        QTest::newRow("no answer: null")
                << bvtsim::Fault::drop() << false << QVariantList{QVariant::fromValue(nullptr)};
        QTest::newRow("engine gone first") << bvtsim::Fault() << true << QVariantList();
    }

    void callbacksGetTheAnswer()
    {
        QFETCH(bvtsim::Fault, fault);
        QFETCH(bool, engineGone);

        m_local->reset();
        m_recorded.clear();
        m_local->service().setFault("GET", "/echo", fault);
        run(R"(BVT.getUrl("/echo", {device: {uuid: "a b"}},
                               answer => test.record(answer.query["device[uuid]"]), test.record))");
        // A C++ host's callbacks tied to its screen, which closes with the engine. They use the
        // screen as a host's lambda uses `this`: run after the delete, AddressSanitizer objects.
        auto screen = std::make_unique<QObject>();
        int runs = 0;
        const auto answered = [screen = screen.get(), &runs](const auto &) {
            screen->setObjectName("answered");
            ++runs;
        };
        BVT::getUrl("/echo", {}, bvt::tiedTo(screen.get(), answered),
                    bvt::tiedTo(screen.get(), answered));
        if (engineGone) {
            m_page.reset();
            m_engine.reset();
            screen.reset();
        }
        QVERIFY(m_local->settledExchanges() > 0);
        // Each sent whether or not anyone still waits for the answer; a GET whose connection closed
        // unanswered once more.
        QCOMPARE(m_local->requestsFor("/echo").size(), fault.dropConnection ? 4 : 2);
        QTEST(m_recorded, "recorded");
        QCOMPARE(runs, engineGone ? 0 : 1);
        if (engineGone)
            showPage();
    }

    void modelListsEveryLoadInSections()
    {
        QStringList shown;
        for (int load = 1; load <= 2; ++load) {
            shown << "News:news:Breaking:breaking:true"
                  << "News:news:Digest:digest:false"
                  << "Orders:orders:Shipping:shipping:true";
            QMetaObject::invokeMethod(model(), "load");
            QVERIFY(model()->property("loading").toBool());
            QTRY_COMPARE(run("return page.rows()").toStringList(), shown);
        }
    }

    void flipReachesTheService_data()
    {
        QTest::addColumn<int>("row");
        QTest::addColumn<bool>("on");
        QTest::addColumn<int>("status");
        QTest::addColumn<QString>("sent"); // path and body; empty when nothing is
        const QString device = "device[uuid]=" + BVT::currentDevice();
        QTest::newRow("on") << 1 << true << 0
                            << "/preferences/enable category=news&" + device + "&preference=digest";
        QTest::newRow("off, refused: stays off")
                << 0 << false << 500
                << "/preferences/disable category=news&" + device + "&preference=breaking";
        QTest::newRow("where it is already") << 2 << true << 0 << QString();
    }

    void flipReachesTheService()
    {
        QFETCH(int, row);
        QFETCH(bool, on);
        QFETCH(int, status);
        QFETCH(QString, sent);

        m_local->reset();
        m_local->service().setFault("PATCH", sent.section(' ', 0, 0),
                                    bvtsim::Fault::status(status));
        LogCapture log;
        run(QString("page.model.setEnabled(%1, %2)").arg(row).arg(on ? "true" : "false"));
        QVERIFY(m_local->settledExchanges() >= 0);
        QStringList requests;
        for (const bvtsim::RecordedRequest &request : m_local->service().requests())
            requests << request.path + ' ' + request.body;
        QCOMPARE(requests, sent.isEmpty() ? QStringList() : QStringList{sent});
        QCOMPARE(log.linesStartingWith("The switch is").size(),
                 sent.isEmpty() ? 0 : 2); // as the widget
        QVERIFY(run("return page.rows()").toStringList().at(row).endsWith(on ? ":true" : ":false"));
    }

    void cardButtons_data()
    {
        QTest::addColumn<QString>("call");      // QML code; none for BVTNotify's C++ call
        QTest::addColumn<QStringList>("asked"); // of the system
        QTest::addColumn<bool>("german");       // the host installs the tests' German translation
        QTest::addColumn<QVariantList>("outcomes"); // the client's, once asked again
        using Client = bvt::Client;
        const auto row = [](const char *name, const QString &call, bool german,
                            const QVariantList &outcomes, const QStringList &asked = {}) {
            QTest::newRow(name) << call << asked << german << outcomes;
        };
        const QString request = "BVTNotify.requestCustomPreferences()";
        row("Keep Me Updated", request, false, {Client::CardKeptUpdated, Client::CardNotShown},
            {"settings:7", "remote"});
        row("Customize Notifications", QString(), false, {Client::CardCustomized});
        row("No Thanks", R"(BVTNotify.requestCustomPreferencesWithColor("red"))", false,
            {Client::CardDeclined});
        row("Mitteilungen anpassen", "Brevanti.requestCustomPreferences()", true,
            {Client::CardCustomized});
    }

    // The page ends every fetch: a failure offers to try again, and each load replaces the list.
    void pageShowsFailuresAndReplacesItsList()
    {
        m_local->service().setFault("GET", "/preferences", bvtsim::Fault::answer(500, "{}"));
        LogCapture log;
        QQuickWindow window;
        const std::unique_ptr<QObject> page = make("PreferencesPage", window);
        QCOMPARE(page->property("title").toString(), "Notifications");
        auto *model = page->property("model").value<QAbstractItemModel *>();
        QTRY_VERIFY(!model->property("errorString").toString().isEmpty());
        QCOMPARE(log.linesStartingWith("Preferences Error... ERROR: {}").size(),
                 1); // as the widget
        m_local->reset();
        QVERIFY(QMetaObject::invokeMethod(
                itemsOf(page.get(), "QQuickAbstractButton", "Try Again").value(0), "clicked"));
        QTRY_COMPARE(model->rowCount(), 3);
        QVERIFY(QMetaObject::invokeMethod(model, "load")); // as the page does on each appearance
        QTRY_VERIFY(!model->property("loading").toBool() && model->rowCount() == 3
                    && model->property("errorString").toString().isEmpty());
    }

    // A host's own card, closed while customizing, opens again on its buttons.
    void embeddedCardReopensOnItsButtons()
    {
        QQuickWindow window;
        const std::unique_ptr<QObject> card = make("PermissionCard", window);
        QVERIFY(QMetaObject::invokeMethod(card.get(), "open")
                && card->setProperty("customizing", true)
                && QMetaObject::invokeMethod(card.get(), "close"));
        QTRY_VERIFY(!card->property("customizing").toBool());
    }

    void cardButtons()
    {
        QFETCH(QString, call);
        QFETCH(QStringList, asked);
        QFETCH(bool, german);
        QTranslator translator; // before the card is made, as a host does; removed when destroyed
        if (german)
            QVERIFY(translator.load(":/i18n/brevanti_de")
                    && QCoreApplication::installTranslator(&translator));
        QSettings().remove(QStringLiteral("com.brevanti.ios.BVTDeviceToken"));
        m_local->reset();
        QQuickWindow window;
        window.resize(375, 667);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        QSignalSpy outcomes(bvt::Client::instance(), &bvt::Client::cardFinished);
        const auto told = [&outcomes] {
            QVariantList values;
            for (const QVariantList &signal : std::as_const(outcomes))
                values << signal.value(0).toInt();
            return values;
        };
        call.isEmpty() ? BVTNotify::requestCustomPreferences() : void(run(call));
        QPointer<QObject> card = window.findChild<QObject *>("brevantiPermissionCard");
        QVERIFY(card);
        const int delay = card->property("permissionDelay").toInt();
        QTRY_VERIFY(card->property("opened").toBool());
        QCOMPARE(card->property("color").value<QColor>(),
                 call.contains("red") ? QColor(Qt::red) : BVTNotify::defaultNotificationColor());
        QCOMPARE(card->property("header").toString(),
                 german ? "Bleib auf dem Laufenden" : "Stay Up To Date");
        tap(itemsOf(card, "QQuickAbstractButton", QTest::currentDataTag()).value(0));
        QVERIFY(m_system.requests().isEmpty()); // the card goes first, the system asks later
        if (QTest::currentDataTag()
            == QLatin1String(german ? "Mitteilungen anpassen" : "Customize Notifications")) {
            // The preferences in the card, under its bar, with a switch named as each row.
            QVERIFY(!itemsOf(card, "QQuickText", "Notifications").isEmpty());
            QTRY_COMPARE(itemsOf(card, "QQuickSwitch").size(), 3);
            QAccessibleInterface *first = QAccessible::queryAccessibleInterface(
                    itemsOf(card, "QQuickSwitch").constFirst());
            QVERIFY(first); // none for an item that declares nothing accessible
            QCOMPARE(first->text(QAccessible::Name), "Breaking");
            QCOMPARE(m_local->requestsFor("/preferences").size(), 1);
            tap(itemsOf(card, "QQuickAbstractButton", german ? "Fertig" : "Done").value(0));
        }
        QTRY_VERIFY(!card); // dismissed, and gone
        // Whatever the tap put off is due before a timer of the same delay started now.
        QEventLoop loop;
        QTimer::singleShot(delay, Qt::PreciseTimer, &loop, &QEventLoop::quit);
        loop.exec();
        QCOMPARE(m_system.requests(), asked);
        m_system.clear();
        if (asked.isEmpty()) {
            QTEST(told(), "outcomes");
            return;
        }
        QTRY_COMPARE(BVT::currentDeviceToken(), m_pushToken.toHex().toUpper());
        LogCapture log; // asked again once accepted: nothing shows
        run(call);
        QCOMPARE(log.linesStartingWith("You have").size(), 1);
        QVERIFY(!window.findChild<QObject *>("brevantiPermissionCard"));
        QTEST(told(), "outcomes");
    }

private:
    void showPage()
    {
        m_engine = std::make_unique<QQmlEngine>();
        QQmlComponent component(m_engine.get());
        component.setData(page, QUrl("page.qml"));
        m_page.reset(component.createWithInitialProperties({{"test", QVariant::fromValue(this)}}));
        QVERIFY2(m_page, qPrintable(component.errorString()));
    }

    QVariant run(const QString &code)
    {
        QVariant result;
        QMetaObject::invokeMethod(m_page.get(), "run", Q_RETURN_ARG(QVariant, result),
                                  Q_ARG(QVariant, code));
        return result;
    }

    // One of the module's components, made in window as a host embeds it.
    std::unique_ptr<QObject> make(const QByteArray &type, QQuickWindow &window)
    {
        QQmlComponent component(m_engine.get());
        component.setData("import Brevanti\n" + type + " { width: 375; height: 600 }", QUrl());
        return std::unique_ptr<QObject>(component.createWithInitialProperties(
                {{"parent", QVariant::fromValue(window.contentItem())}}));
    }
    QObject *bvtSingleton() { return run("return BVT").value<QObject *>(); }
    QObject *model() const { return m_page->property("model").value<QObject *>(); }

    std::unique_ptr<LocalService> m_local;
    std::unique_ptr<QQmlEngine> m_engine;
    std::unique_ptr<QObject> m_page;
    QVariantList m_recorded;
    const QByteArray m_pushToken = QByteArray(32, '*');
    bvtstandin::StandInOperatingSystem m_system;
};

int main(int argc, char **argv)
{
    qputenv("QT_QUICK_BACKEND", "software");
    QGuiApplication app(argc, argv);
    QCoreApplication::setOrganizationName("BrevantiQuickTests");
    QStandardPaths::setTestModeEnabled(true);
    TestQuick test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_quick.moc"
