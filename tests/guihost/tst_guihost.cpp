#include "localservice.h"

#include <Brevanti/BVT.h>
#include <Brevanti/BVTNotify.h>

#include <QGuiApplication>
#include <QStandardPaths>
#include <QTest>
#include <QWindow>

// A host on QGuiApplication, as Qt Quick applications are: the widget screens show nothing and
// say so instead of aborting, and a callback tied to an object does not outlive it.
class TestGuiHost : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void widgetScreensShowNothing();
    void tiedCallbackRunsOnlyWhileItsContextLives_data();
    void tiedCallbackRunsOnlyWhileItsContextLives();

private:
    std::unique_ptr<LocalService> m_local;
};

void TestGuiHost::initTestCase()
{
    m_local = std::make_unique<LocalService>();
    BVT::initWithLaunchOptions({}, LocalService::clientId, LocalService::clientSecret);
    QTRY_VERIFY(!BVT::currentDevice().isNull());
    BVT::setCurrentDeviceToken(QString()); // else the popup is not even asked for
}

void TestGuiHost::widgetScreensShowNothing()
{
    const char *line = "The library's screens need a QApplication (Qt Widgets); nothing is shown";
    QTest::ignoreMessage(QtWarningMsg, line);
    BVTNotify::requestCustomPreferences();
    QTest::ignoreMessage(QtWarningMsg, line);
    BVTNotify::openPreferencesWithNavigationController(nullptr);
    QVERIFY(QGuiApplication::topLevelWindows().isEmpty());
}

void TestGuiHost::tiedCallbackRunsOnlyWhileItsContextLives_data()
{
    QTest::addColumn<bool>("closedFirst");
    QTest::newRow("open when the answer comes") << false;
    QTest::newRow("closed before the answer") << true;
}

void TestGuiHost::tiedCallbackRunsOnlyWhileItsContextLives()
{
    QFETCH(bool, closedFirst);
    m_local->reset();
    auto *screen = new QObject;
    int runs = 0;
    // Captures the screen as a host's lambda captures `this`: run after the delete, ASan objects.
    const auto answered = [screen, &runs](const auto &) {
        screen->setProperty("answered", true);
        ++runs;
    };
    BVT::getUrl("/echo", {}, bvt::tiedTo(screen, answered), bvt::tiedTo(screen, answered));
    if (closedFirst)
        delete screen;
    QVERIFY(m_local->settledExchanges() > 0);
    QCOMPARE(m_local->requestsFor("/echo").size(), 1);
    QCOMPARE(runs, closedFirst ? 0 : 1);
    if (!closedFirst)
        delete screen;
}

int main(int argc, char **argv)
{
    QGuiApplication app(argc, argv);
    QStandardPaths::setTestModeEnabled(true);
    TestGuiHost test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_guihost.moc"
