#include "localservice.h"
#include "logcapture.h"
#include "phonewindow.h"
#include "standinoperatingsystem.h"

#include <Brevanti/BVT.h>
#include <Brevanti/BVTNotify.h>
#include <Brevanti/BVTNotifyPreferencesViewController.h>
#include <Brevanti/BVTNotifyRequestViewController.h>
#include <Brevanti/platform/PopupController.h>
#include <Brevanti/platform/TabBarController.h>

#include <QLabel>
#include <QPushButton>
#include <QSettings>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>
#include <QToolButton>

using Request = BVTNotifyRequestViewController;
using Preferences = BVTNotifyPreferencesViewController;

class TestPopup : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void init();
    void cardTakesTheGivenLook_data();
    void cardTakesTheGivenLook();
    void cardSizesComeFromTheMainScreen_data();
    void cardSizesComeFromTheMainScreen();
    void buttons_data();
    void buttons();
    void topControllerWalk_data();
    void topControllerWalk();

private:
    bvt::PopupController *shownPopup() const;

    const QByteArray m_pushToken = QByteArray(32, '*');
    std::unique_ptr<LocalService> m_local;
    std::unique_ptr<LogCapture> m_log; // made once QtTest has its own message handler
    std::unique_ptr<PhoneWindow> m_phone;
    bvtstandin::StandInOperatingSystem m_system;
};

void TestPopup::initTestCase()
{
    m_local = std::make_unique<LocalService>();
    QVERIFY(PhoneWindow::startLibraryWithNewDevice());
    m_log = std::make_unique<LogCapture>();
    // The host's part: the token that the system hands over goes to the service.
    m_system.setTokenToHandOut(m_pushToken);
    connect(&m_system, &bvtstandin::StandInOperatingSystem::deviceTokenReceived,
            [](const QByteArray &token) { BVTNotify::enableDevice(token); });
    m_system.install();
}

void TestPopup::init()
{
    QSettings().remove(QStringLiteral("com.brevanti.ios.BVTDeviceToken"));
    m_local->reset();
    m_system.clear();
    LogCapture::clear();
    m_phone = std::make_unique<PhoneWindow>();
}

bvt::PopupController *TestPopup::shownPopup() const
{
    for (auto *popup : m_phone->root()->findChildren<bvt::PopupController *>()) {
        if (popup->isPresented())
            return popup;
    }
    return nullptr;
}

void TestPopup::cardTakesTheGivenLook_data()
{
    QTest::addColumn<int>("given"); // how many of colour, icon, header and sub-header
    QTest::addColumn<QColor>("colour");
    QTest::addColumn<QString>("header");
    QTest::addColumn<QString>("subHeader");
    const QString header = BVTNotify::defaultNotificationHeader();
    const QString sub = BVTNotify::defaultNotificationSubHeader();
    QTest::newRow("none") << 0 << QColor::fromRgbF(0.23f, 0.36f, 0.59f) << header << sub;
    QTest::newRow("colour") << 1 << QColor(Qt::red) << header << sub;
    QTest::newRow("colour, icon") << 2 << QColor(Qt::red) << header << sub;
    QTest::newRow("nil colour, icon, nil header") << 3 << QColor() << QString() << sub;
    QTest::newRow("all four") << 4 << QColor(Qt::blue) << "Header"
                              << "Sub";
}

void TestPopup::cardTakesTheGivenLook()
{
    QFETCH(int, given);
    QFETCH(QColor, colour);
    QFETCH(QString, header);
    QFETCH(QString, subHeader);
    const QPixmap icon(8, 8);
    const std::function<void()> forms[] = {
            [] { BVTNotify::requestCustomPreferences(); },
            [&] { BVTNotify::requestCustomPreferencesWithColor(colour); },
            [&] { BVTNotify::requestCustomPreferencesWithColor(colour, icon); },
            [&] { BVTNotify::requestCustomPreferencesWithColor(colour, icon, header); },
            [&] { BVTNotify::requestCustomPreferencesWithColor(colour, icon, header, subHeader); }};
    forms[given]();
    QVERIFY(shownPopup() && m_log->lines().isEmpty());
    auto *request = qobject_cast<Request *>(shownPopup()->topViewController());
    QCOMPARE(request->title(), "Notifications");
    QCOMPARE(request->headerLabel()->text(), header);
    QCOMPARE(request->subheaderLabel()->text(), subHeader);
    QCOMPARE(request->popupIcon().size(), given >= 2 ? icon.size() : QSize(0, 0)); // none in tests
    QVERIFY(request->alertIcon()->pixmap().isNull()); // kept, not shown
    QCOMPARE(request->keepMeUpdatedButton()->text(), "Keep Me Updated");
    QCOMPARE(request->customizeButton()->text(), "Customize Notifications");
    QCOMPARE(request->noThanksButton()->text(), "No Thanks");
    const QString css = colour.isValid() ? colour.name(QColor::HexArgb) : "transparent";
    QVERIFY(request->headerLabel()->styleSheet().contains("color: " + css));
    QVERIFY(request->alertIcon()->styleSheet().contains("background-color: " + css));
    QVERIFY(request->keepMeUpdatedButton()->styleSheet().contains("background-color: " + css));
    QVERIFY(request->customizeButton()->styleSheet().contains("2px solid " + css));
    QVERIFY(request->noThanksButton()->styleSheet().contains(QColor(191, 191, 191).name()));

    // Over the dimmed window, with round corners; the bar (hidden on this card) takes the colour
    // with white texts.
    bvt::PopupController *popup = shownPopup();
    QCOMPARE(popup->backgroundView()->palette().color(QPalette::Window),
             QColor::fromRgbF(0, 0, 0, 0.8f));
    QCOMPARE(popup->cornerRadius(), 4.0);
    bvt::PopupNavigationBar *bar = popup->navigationBar();
    QVERIFY(!bar->isVisible());
    QCOMPARE(bar->grab().toImage().pixel(100, 10),
             colour.isValid() ? colour.rgb() : qRgb(255, 255, 255));
    QCOMPARE(bar->findChild<QLabel *>()->palette().color(QPalette::WindowText), QColor(Qt::white));
    QCOMPARE(bar->rightButton()->palette().color(QPalette::ButtonText), QColor(Qt::white));
}

void TestPopup::cardSizesComeFromTheMainScreen_data()
{
    QTest::addColumn<QSize>("screen");
    QTest::addColumn<QSize>("request");
    QTest::addColumn<QSize>("requestLandscape");
    QTest::addColumn<QSize>("preferences");
    QTest::addColumn<QSize>("preferencesLandscape");
    QTest::newRow("320 x 568") << QSize(320, 568) << QSize(290, 460) << QSize(538, 340)
                               << QSize(290, 400) << QSize(538, 260);
    QTest::newRow("375 x 667") << QSize(375, 667) << QSize(345, 460) << QSize(637, 340)
                               << QSize(345, 400) << QSize(637, 315);
}

void TestPopup::cardSizesComeFromTheMainScreen()
{
    QFETCH(QSize, screen);
    bvt::Screen::mainScreen().setPhoneSize(screen);
    const Request request;
    QTEST(request.contentSizeInPopup(), "request");
    QTEST(request.landscapeContentSizeInPopup(), "requestLandscape");
    QCOMPARE(request.popupHeader(), BVTNotify::defaultNotificationHeader());
    const std::unique_ptr<Preferences> preferences(Preferences::initInPopup());
    QTEST(preferences->contentSizeInPopup(), "preferences");
    QTEST(preferences->landscapeContentSizeInPopup(), "preferencesLandscape");
}

void TestPopup::buttons_data()
{
    QTest::addColumn<int>("button");        // Keep Me Updated, Customize Notifications, No Thanks
    QTest::addColumn<QStringList>("asked"); // of the system
    QTest::newRow("Keep Me Updated") << 0 << QStringList({"settings:7", "remote"});
    QTest::newRow("Customize Notifications") << 1 << QStringList();
    QTest::newRow("No Thanks") << 2 << QStringList();
}

void TestPopup::buttons()
{
    QFETCH(int, button);
    BVTNotify::requestCustomPreferences();
    bvt::PopupController *popup = shownPopup();
    auto *request = qobject_cast<Request *>(popup->topViewController());
    QSignalSpy dismissed(popup, &bvt::PopupController::dismissed);
    const QList<QPushButton *> buttons = {request->keepMeUpdatedButton(),
                                          request->customizeButton(), request->noThanksButton()};
    buttons[button]->click();
    QCOMPARE(dismissed.size(), button == 1 ? 0 : 1);
    QVERIFY(m_system.requests().isEmpty()); // the card goes first, the system asks later
    // Whatever the tap put off is due before a timer of the same delay started now.
    QTimer later;
    later.setTimerType(Qt::PreciseTimer);
    later.setSingleShot(true);
    QSignalSpy due(&later, &QTimer::timeout);
    later.start(Request::permissionDelayMs);
    QVERIFY(due.wait());
    QTEST(m_system.requests(), "asked");
    if (button == 0) {
        const QString token = m_pushToken.toHex().toUpper();
        QTRY_COMPARE(BVT::currentDeviceToken(), token); // once the service took it
        QCOMPARE(m_local->service().device(BVT::currentDevice())["push_token"], token);
    } else if (button == 2) {
        QVERIFY(m_local->service().requests().isEmpty());
    } else {
        // The preferences in the card, under its bar with Done.
        auto *preferences = qobject_cast<Preferences *>(popup->topViewController());
        QVERIFY(preferences && preferences->popupController() == popup);
        bvt::PopupNavigationBar *bar = popup->navigationBar();
        QVERIFY(bar->isVisible() && bar->title() == "Notifications");
        QVERIFY(bar->rightButton()->isVisible() && bar->rightButton()->text() == "Done");
        QTRY_VERIFY(!preferences->tableData().isEmpty());
        // Back to the card: the bar is hidden again and the texts applied again.
        request->headerLabel()->setText("changed");
        delete popup->popViewControllerAnimated(false);
        QVERIFY(!bar->isVisible() && request->headerLabel()->text() == "Stay Up To Date");
        // Done closes the whole card.
        request->customizeButton()->click();
        QTRY_COMPARE(m_local->requestsFor("/preferences").size(), 2);
        QTest::mouseClick(bar->rightButton(), Qt::LeftButton);
        QCOMPARE(dismissed.size(), 1);
    }

    // Asked again: the card shows only while no token is stored.
    BVTNotify::requestCustomPreferences();
    BVTNotify::requestCustomPreferencesWithColor(Qt::red, QPixmap(), QString(), QString());
    QCOMPARE(shownPopup() != nullptr, button != 0);
    QCOMPARE(m_log->linesStartingWith("You have"),
             QStringList(button ? 0 : 2, "You have already accepted push notifications!"));
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
    bvt::ViewController *root = nullptr, *top = nullptr;
    if (hierarchy == 0) {
        auto *navigation = new bvt::NavigationController(new bvt::ViewController);
        navigation->pushViewController(new bvt::ViewController, false);
        navigation->pushViewController(top = new bvt::ViewController, false);
        auto *tabs = new bvt::TabBarController;
        tabs->setViewControllers({new bvt::ViewController, navigation});
        tabs->setSelectedIndex(1);
        root = tabs;
    } else {
        root = hierarchy == 1 ? new bvt::NavigationController(nullptr)
                              : top = new bvt::ViewController;
    }
    // From the key window's root; the card shows over that controller, or nowhere.
    m_phone = std::make_unique<PhoneWindow>(root);
    QCOMPARE(BVTNotify::topViewController(), top);
    BVTNotify::requestCustomPreferences();
    QCOMPARE(shownPopup() ? shownPopup()->parent() : nullptr, top);
}

QTEST_MAIN(TestPopup)

#include "tst_popup.moc"
