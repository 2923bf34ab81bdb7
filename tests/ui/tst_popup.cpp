#include "localservice.h"
#include "logcapture.h"
#include "standinoperatingsystem.h"

#include <Brevanti/BVT.h>
#include <Brevanti/BVTNotify.h>
#include <Brevanti/BVTNotifyPreferencesViewController.h>
#include <Brevanti/BVTNotifyRequestViewController.h>
#include <Brevanti/platform/NavigationController.h>
#include <Brevanti/platform/PopupController.h>
#include <Brevanti/platform/Screen.h>
#include <Brevanti/platform/TabBarController.h>
#include <Brevanti/platform/Window.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QLabel>
#include <QPushButton>
#include <QSettings>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QTest>

class TestPopup : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void popupShowsOnlyWhileNoTokenIsStored();
    void popupIsStyledWithTheGivenColour();
    void explicitNilsStayNil();
    void cardSizes_data();
    void cardSizes();
    void keepMeUpdatedClosesThenAsksOnce();
    void customizeShowsThePreferencesInTheCard();
    void noThanksSendsNothing();
    void topControllerWalk_data();
    void topControllerWalk();
    void openPreferencesPushesAFullScreenScreen();

private:
    bvt::PopupController *shownPopup() const;
    BVTNotifyRequestViewController *shownRequest() const;

    std::unique_ptr<LocalService> m_local;
    std::unique_ptr<LogCapture> m_log;
    std::unique_ptr<bvt::Window> m_window;
    bvt::NavigationController *m_navigation = nullptr;
    bvtstandin::StandInOperatingSystem m_system;
};

void TestPopup::initTestCase()
{
    m_local = std::make_unique<LocalService>();
    QSettings().remove("com.brevanti.ios.BVTDeviceId");
    BVT::initWithLaunchOptions({}, LocalService::clientId, LocalService::clientSecret);
    QTRY_VERIFY(!BVT::currentDevice().isNull());
    m_system.install();
}

void TestPopup::init()
{
    bvt::Screen::mainScreen().setPhoneSize({375, 667});
    QSettings().remove("com.brevanti.ios.BVTDeviceToken");
    m_local->reset();
    m_system.clear();
    m_log = std::make_unique<LogCapture>();
    m_window = std::make_unique<bvt::Window>();
    m_navigation = new bvt::NavigationController(new bvt::ViewController);
    m_window->setRootViewController(m_navigation);
    m_window->show();
}

void TestPopup::cleanup()
{
    m_window.reset();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    m_log.reset();
}

bvt::PopupController *TestPopup::shownPopup() const
{
    auto *popup = m_navigation->topViewController()->findChild<bvt::PopupController *>();
    return popup && popup->isPresented() ? popup : nullptr;
}

BVTNotifyRequestViewController *TestPopup::shownRequest() const
{
    bvt::PopupController *popup = shownPopup();
    return popup ? qobject_cast<BVTNotifyRequestViewController *>(popup->viewControllers().first())
                 : nullptr;
}

void TestPopup::popupShowsOnlyWhileNoTokenIsStored()
{
    BVTNotify::requestCustomPreferences();
    QVERIFY(shownRequest());
    QVERIFY(m_log->lines().isEmpty());
    shownRequest()->noThanksButton()->click();
    QVERIFY(!shownPopup());

    BVT::setCurrentDeviceToken("ABCD");
    m_log->clear();
    BVTNotify::requestCustomPreferences();
    BVTNotify::requestCustomPreferencesWithColor(Qt::red, QPixmap(), QString(), QString());
    QVERIFY(!shownPopup());
    QCOMPARE(m_log->lines(), QStringList(2, "You have already accepted push notifications!"));
}

void TestPopup::popupIsStyledWithTheGivenColour()
{
    BVTNotify::requestCustomPreferencesWithColor(Qt::red);
    const bvt::PopupNavigationBar::Appearance &look = bvt::PopupNavigationBar::appearance();
    QCOMPARE(look.barTintColor, QColor(Qt::red));
    QCOMPARE(look.tintColor, QColor(Qt::white));
    QCOMPARE(look.titleColor, QColor(Qt::white));
    QVERIFY(look.barStyle == bvt::PopupNavigationBar::BarStyle::Default);

    bvt::PopupController *popup = shownPopup();
    QVERIFY(popup);
    QCOMPARE(popup->backgroundView()->palette().color(QPalette::Window),
             QColor::fromRgbF(0, 0, 0, 0.8f));
    QCOMPARE(popup->backgroundView()->geometry(), m_window->widget()->rect());
    QCOMPARE(popup->cornerRadius(), 4.0);
    QVERIFY(popup->isNavigationBarHidden()); // the card hides the bar

    BVTNotifyRequestViewController *request = shownRequest();
    QCOMPARE(request->title(), "Notifications");
    QCOMPARE(request->popupColor(), QColor(Qt::red));
    QCOMPARE(request->headerLabel()->text(), "Stay Up To Date");
    QCOMPARE(request->subheaderLabel()->text(),
             "Turn on notifications to make sure you don't miss anything you care about!");
    QCOMPARE(request->keepMeUpdatedButton()->text(), "Keep Me Updated");
    QCOMPARE(request->customizeButton()->text(), "Customize Notifications");
    QCOMPARE(request->noThanksButton()->text(), "No Thanks");
    const QString red = QColor(Qt::red).name(QColor::HexArgb);
    QVERIFY(request->headerLabel()->styleSheet().contains(red));
    QVERIFY(request->alertIcon()->styleSheet().contains(red));
    QVERIFY(request->customizeButton()->styleSheet().contains("2px solid " + red));
    QVERIFY(request->noThanksButton()->styleSheet().contains(QColor(191, 191, 191).name()));
    QCOMPARE(BVTNotify::defaultNotificationColor(), QColor::fromRgbF(0.23f, 0.36f, 0.59f, 1.0f));
    QVERIFY(BVTNotify::defaultNotificationIcon().isNull()); // the tests carry no such image
    QVERIFY(m_window->widget()->grab().save(QCoreApplication::applicationDirPath()
                                            + "/request-popup.png"));
}

void TestPopup::explicitNilsStayNil()
{
    const QPixmap icon(8, 8);
    BVTNotify::requestCustomPreferencesWithColor(QColor(), icon, QString());
    BVTNotifyRequestViewController *request = shownRequest();
    QVERIFY(!request->popupColor().isValid());
    QVERIFY(request->popupHeader().isNull());
    QCOMPARE(request->headerLabel()->text(), "");
    QCOMPARE(request->popupSubHeader(), BVTNotify::defaultNotificationSubHeader());
    QCOMPARE(request->popupIcon().size(), icon.size());
    QVERIFY(request->alertIcon()->pixmap().isNull()); // the icon is kept, not shown
}

void TestPopup::cardSizes_data()
{
    QTest::addColumn<QSize>("screen");
    QTest::addColumn<QSize>("portrait");
    QTest::addColumn<QSize>("landscape");
    QTest::newRow("320 x 568") << QSize(320, 568) << QSize(290, 460) << QSize(538, 340);
    QTest::newRow("375 x 667") << QSize(375, 667) << QSize(345, 460) << QSize(637, 340);
}

void TestPopup::cardSizes()
{
    QFETCH(QSize, screen);
    QFETCH(QSize, portrait);
    QFETCH(QSize, landscape);

    bvt::Screen::mainScreen().setPhoneSize(screen);
    BVTNotifyRequestViewController request;
    QCOMPARE(request.contentSizeInPopup(), portrait);
    QCOMPARE(request.landscapeContentSizeInPopup(), landscape);
    QCOMPARE(request.popupHeader(), BVTNotify::defaultNotificationHeader());
}

void TestPopup::keepMeUpdatedClosesThenAsksOnce()
{
    BVTNotify::requestCustomPreferences();
    QSignalSpy dismissed(shownPopup(), &bvt::PopupController::dismissed);
    QElapsedTimer clock;
    clock.start();
    shownRequest()->keepMeUpdatedButton()->click();
    QCOMPARE(dismissed.size(), 1);               // closed first
    QCOMPARE(m_system.remoteRegistrations(), 0); // asked only later
    QTRY_COMPARE(m_system.remoteRegistrations(), 1);
    qInfo("permission asked %lld ms after the tap", clock.elapsed());
    QTest::qWait(150);
    QCOMPARE(m_system.remoteRegistrations(), 1);
    QCOMPARE(m_system.requests(), QStringList({"settings:7", "remote"}));
}

void TestPopup::customizeShowsThePreferencesInTheCard()
{
    BVTNotify::requestCustomPreferences();
    bvt::PopupController *popup = shownPopup();
    BVTNotifyRequestViewController *request = shownRequest();
    request->customizeButton()->click();
    auto *preferences =
            qobject_cast<BVTNotifyPreferencesViewController *>(popup->topViewController());
    QVERIFY(preferences);
    QVERIFY(!popup->isNavigationBarHidden());
    QCOMPARE(preferences->view()->size(), preferences->contentSizeInPopup());
    QCOMPARE(popup->navigationBar()->title(), "Notifications");
    QTRY_VERIFY(!preferences->tableData().isEmpty());
    QVERIFY(m_window->widget()->grab().save(QCoreApplication::applicationDirPath()
                                            + "/request-customize.png"));

    // Back to the card: the bar is hidden again and the texts applied again.
    request->headerLabel()->setText("changed");
    std::unique_ptr<bvt::ViewController> popped(popup->popViewControllerAnimated(false));
    QVERIFY(popup->isNavigationBarHidden());
    QCOMPARE(request->headerLabel()->text(), "Stay Up To Date");
}

void TestPopup::noThanksSendsNothing()
{
    BVTNotify::requestCustomPreferences();
    QSignalSpy dismissed(shownPopup(), &bvt::PopupController::dismissed);
    shownRequest()->noThanksButton()->click();
    QCOMPARE(dismissed.size(), 1);
    QTest::qWait(200);
    QVERIFY(m_local->service().requests().isEmpty());
    QVERIFY(m_system.requests().isEmpty());
    QVERIFY(BVT::currentDeviceToken().isNull());
}

void TestPopup::topControllerWalk_data()
{
    QTest::addColumn<int>("hierarchy");
    QTest::newRow("tab bar > navigation stack of three") << 0;
    QTest::newRow("empty navigation stack") << 1;
    QTest::newRow("plain controller") << 2;
}

void TestPopup::topControllerWalk()
{
    QFETCH(int, hierarchy);

    std::unique_ptr<bvt::ViewController> root;
    bvt::ViewController *expected = nullptr;
    if (hierarchy == 0) {
        auto *first = new bvt::ViewController;
        auto *navigation = new bvt::NavigationController(first);
        navigation->pushViewController(new bvt::ViewController, false);
        expected = new bvt::ViewController;
        navigation->pushViewController(expected, false);
        auto *tabs = new bvt::TabBarController;
        tabs->setViewControllers({new bvt::ViewController, navigation});
        tabs->setSelectedIndex(1);
        root.reset(tabs);
    } else if (hierarchy == 1) {
        root = std::make_unique<bvt::NavigationController>(nullptr);
    } else {
        root = std::make_unique<bvt::ViewController>();
        expected = root.get();
    }
    QCOMPARE(BVTNotify::topViewController(root.get()), expected);
    QCOMPARE(BVTNotify::topViewController(nullptr), nullptr);

    // In the key window, with every view loaded and shown, the walk still ends there, and so does
    // the popup: over that controller, or nowhere.
    m_window = std::make_unique<bvt::Window>();
    m_window->setRootViewController(root.release());
    m_window->show();
    QCOMPARE(BVTNotify::topViewController(), expected);
    QVERIFY(!expected || expected->view()->isVisible());
    BVTNotify::requestCustomPreferences();
    const auto *popup = m_window->rootViewController()->findChild<bvt::PopupController *>();
    QCOMPARE(popup ? popup->parent() : nullptr, expected);
}

void TestPopup::openPreferencesPushesAFullScreenScreen()
{
    const int before = int(m_navigation->viewControllers().size());
    BVTNotify::openPreferencesWithNavigationController(m_navigation);
    QCOMPARE(m_navigation->viewControllers().size(), before + 1);
    auto *screen =
            qobject_cast<BVTNotifyPreferencesViewController *>(m_navigation->topViewController());
    QVERIFY(screen);
    QVERIFY(screen->contentSizeInPopup().isEmpty());
    QVERIFY(!screen->doneButton());
    BVTNotify::openPreferencesWithNavigationController(nullptr); // made and dropped
}

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    QCoreApplication::setOrganizationName("BrevantiTests");
    QStandardPaths::setTestModeEnabled(true);
    TestPopup test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_popup.moc"
