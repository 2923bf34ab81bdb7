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

#include <QEventLoop>
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
    QTest::newRow("all four") << 4 << QColor(Qt::blue) << QString("Header") << QString("Sub");
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
    QVERIFY(request->alertIcon()->pixmap().isNull());         // an icon given is not shown
    QCOMPARE(request->contentSizeInPopup(), QSize(345, 460)); // from the 375 x 667 screen
    QCOMPARE(request->landscapeContentSizeInPopup(), QSize(637, 340));
    QCOMPARE(Request().popupHeader(), BVTNotify::defaultNotificationHeader());
    const QString css = colour.isValid() ? colour.name(QColor::HexArgb) : "transparent";
    QVERIFY(request->headerLabel()->styleSheet().contains("color: " + css));

    // The bar, hidden on this card and shown over the preferences, has a white title.
    const bvt::PopupNavigationBar *bar = shownPopup()->navigationBar();
    QVERIFY(!bar->isVisible());
    QCOMPARE(bar->findChild<QLabel *>()->palette().color(QPalette::WindowText), QColor(Qt::white));
}

void TestPopup::buttons_data()
{
    QTest::addColumn<int>("button");        // the row's name is the button's text
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
    QCOMPARE(buttons[button]->text(), QTest::currentDataTag());
    buttons[button]->click();
    QCOMPARE(dismissed.size(), button == 1 ? 0 : 1);
    QVERIFY(m_system.requests().isEmpty()); // the card goes first, the system asks later
    // Whatever the tap put off is due before a timer of the same delay started now.
    QEventLoop loop;
    QTimer::singleShot(Request::permissionDelayMs, Qt::PreciseTimer, &loop, &QEventLoop::quit);
    loop.exec();
    QTEST(m_system.requests(), "asked");
    if (button == 0) {
        const QString token = m_pushToken.toHex().toUpper();
        QTRY_COMPARE(BVT::currentDeviceToken(), token); // once the service took it
        QCOMPARE(m_local->service().device(BVT::currentDevice())["push_token"], token);
    } else if (button == 2) {
        QVERIFY(m_local->service().requests().isEmpty());
    } else {
        // The preferences in the card, sized from the screen, under its bar with Done.
        auto *preferences = qobject_cast<Preferences *>(popup->topViewController());
        QVERIFY(preferences && preferences->popupController() == popup);
        QCOMPARE(preferences->contentSizeInPopup(), QSize(345, 400));
        QCOMPARE(preferences->landscapeContentSizeInPopup(), QSize(637, 315));
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
    BVTNotify::requestCustomPreferencesWithColor(Qt::red, QPixmap(), QString(), QString());
    QCOMPARE(shownPopup() != nullptr, button != 0);
    QCOMPARE(m_log->linesStartingWith("You have"),
             QStringList(button ? 0 : 1, "You have already accepted push notifications!"));
}

void TestPopup::topControllerWalk_data()
{
    QTest::addColumn<int>("hierarchy");
    QTest::newRow("tab bar > navigation stack of two") << 0;
    QTest::newRow("empty navigation stack") << 1;
    QTest::newRow("plain controller") << 2;
}

void TestPopup::topControllerWalk()
{
    QFETCH(int, hierarchy);
    bvt::ViewController *root = nullptr, *top = nullptr;
    if (hierarchy == 0) {
        auto *navigation = new bvt::NavigationController(new bvt::ViewController);
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
