#include "localservice.h"
#include "logcapture.h"

#include <Brevanti/BVT.h>
#include <Brevanti/BVTNotifyPreferencesViewController.h>
#include <Brevanti/platform/ActivityIndicatorView.h>
#include <Brevanti/platform/NavigationController.h>
#include <Brevanti/platform/PopupController.h>
#include <Brevanti/platform/Screen.h>
#include <Brevanti/platform/ViewTag.h>
#include <Brevanti/platform/Window.h>

#include <QAction>
#include <QApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QLabel>
#include <QSettings>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QTest>

namespace {

const QSize phone(375, 667);

// Three categories of two preferences; the first preference of each is on.
QJsonArray catalogue(int categories = 3, int preferences = 2)
{
    QJsonArray document;
    for (int c = 0; c < categories; ++c) {
        QJsonArray rows;
        for (int p = 0; p < preferences; ++p)
            rows.append(QJsonObject{{"name", QStringLiteral("Preference %1.%2").arg(c).arg(p)},
                                    {"key", QStringLiteral("p%1").arg(p)},
                                    {"enabled", p == 0}});
        document.append(QJsonObject{{"name", QStringLiteral("Category %1").arg(c)},
                                    {"key", QStringLiteral("c%1").arg(c)},
                                    {"preferences", rows}});
    }
    return document;
}

QString labelText(QWidget *cell)
{
    const auto labels = cell->findChildren<QLabel *>();
    return labels.isEmpty() ? QString() : labels.first()->text();
}

BVTNotifySwitch *switchOf(bvt::TableViewCell *cell)
{
    return qobject_cast<BVTNotifySwitch *>(cell->accessoryView());
}

} // namespace

class TestPreferences : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void cardSizesComeFromTheMainScreen_data();
    void cardSizesComeFromTheMainScreen();
    void spinnerTurnsUntilANonEmptyDocument();
    void eachAppearanceFetchesAndAppends();
    void sectionsAndRowsHaveTheirGeometry();
    void flipSendsTheRowsPreference_data();
    void flipSendsTheRowsPreference();
    void reusedCellKeepsItsOldContent();
    void rotationRefitsTheTable();
    void oddDocumentsRenderWithoutCrash_data();
    void oddDocumentsRenderWithoutCrash();
    void doneDismissesOnlyAPopup();

private:
    // The screen pushed on a navigation stack in a phone-sized window, filled.
    BVTNotifyPreferencesViewController *showFilled();

    std::unique_ptr<LocalService> m_local;
    std::unique_ptr<LogCapture> m_log;
    std::unique_ptr<bvt::Window> m_window;
    bvt::NavigationController *m_navigation = nullptr;
};

void TestPreferences::initTestCase()
{
    bvt::Screen::mainScreen().setPhoneSize(phone);
    m_local = std::make_unique<LocalService>();
    QSettings().remove("com.brevanti.ios.BVTDeviceId");
    BVT::initWithLaunchOptions({}, LocalService::clientId, LocalService::clientSecret);
    QTRY_VERIFY(!BVT::currentDevice().isNull());
    BVT::setCurrentDeviceToken("00"); // no permission requests from the switches
}

void TestPreferences::init()
{
    bvt::Screen::mainScreen().setPhoneSize(phone);
    m_local->reset();
    QVERIFY(m_local->service().setCatalogue(catalogue()));
    m_log = std::make_unique<LogCapture>();
    m_window = std::make_unique<bvt::Window>();
    m_navigation = new bvt::NavigationController(new bvt::ViewController);
    m_window->setRootViewController(m_navigation);
    m_window->show();
}

void TestPreferences::cleanup()
{
    m_window.reset();
    m_log.reset();
}

BVTNotifyPreferencesViewController *TestPreferences::showFilled()
{
    auto *screen = new BVTNotifyPreferencesViewController;
    m_navigation->pushViewController(screen, false);
    // Callers check the outcome: a QTRY macro cannot return a value.
    (void)QTest::qWaitFor([screen] { return screen->tableData().size() == 3; });
    return screen;
}

void TestPreferences::cardSizesComeFromTheMainScreen_data()
{
    QTest::addColumn<QSize>("screen");
    QTest::addColumn<QSize>("portrait");
    QTest::addColumn<QSize>("landscape");
    QTest::newRow("375 x 667") << phone << QSize(345, 400) << QSize(637, 315);
    QTest::newRow("320 x 568") << QSize(320, 568) << QSize(290, 400) << QSize(538, 260);
}

void TestPreferences::cardSizesComeFromTheMainScreen()
{
    QFETCH(QSize, screen);
    QFETCH(QSize, portrait);
    QFETCH(QSize, landscape);

    bvt::Screen::mainScreen().setPhoneSize(screen);
    std::unique_ptr<BVTNotifyPreferencesViewController> popup(
            BVTNotifyPreferencesViewController::initInPopup());
    QCOMPARE(popup->title(), "Notifications");
    QCOMPARE(popup->contentSizeInPopup(), portrait);
    QCOMPARE(popup->landscapeContentSizeInPopup(), landscape);
    QVERIFY(popup->doneButton());
    QCOMPARE(popup->doneButton()->text(), "Done");
    QCOMPARE(popup->navigationItem().rightBarButtonItem.data(), popup->doneButton());

    BVTNotifyPreferencesViewController plain;
    QCOMPARE(plain.title(), "Notifications");
    QVERIFY(plain.contentSizeInPopup().isEmpty());
    QVERIFY(plain.landscapeContentSizeInPopup().isEmpty());
    QVERIFY(!plain.doneButton());
    QVERIFY(!plain.navigationItem().rightBarButtonItem);
}

void TestPreferences::spinnerTurnsUntilANonEmptyDocument()
{
    QVERIFY(m_local->service().setCatalogue(QJsonArray()));
    auto *screen = new BVTNotifyPreferencesViewController;
    m_navigation->pushViewController(screen, false);
    QTRY_COMPARE(m_local->requestsFor("/preferences").size(), 1);
    QTest::qWait(50); // the empty document has arrived
    const auto spinners = screen->view()->findChildren<bvt::ActivityIndicatorView *>();
    QCOMPARE(spinners.size(), 1);
    QCOMPARE(bvt::viewWithTag(screen->view(), 12), spinners.first());
    QCOMPARE(spinners.first()->center(), QPoint(screen->view()->width() / 2, 62));
    QVERIFY(screen->tableData().isEmpty());

    // A failed fetch: one log line, spinner still there.
    bvtsim::Fault broken;
    broken.status = 500;
    broken.body = "down";
    m_local->service().setFault("GET", "/preferences", broken);
    m_navigation->pushViewController(new bvt::ViewController, false);
    m_navigation->popViewControllerAnimated(false)->deleteLater();
    QTRY_COMPARE(m_log->linesStartingWith("Preferences Error").size(), 1);
    QCOMPARE(m_log->linesStartingWith("Preferences Error").first(),
             "Preferences Error... ERROR: down");
    QVERIFY(bvt::viewWithTag(screen->view(), 12));

    // A document: gone for good, also on later appearances.
    m_local->service().clearFaults();
    QVERIFY(m_local->service().setCatalogue(catalogue()));
    m_navigation->pushViewController(new bvt::ViewController, false);
    m_navigation->popViewControllerAnimated(false)->deleteLater();
    QTRY_COMPARE(screen->tableData().size(), 3);
    QVERIFY(!bvt::viewWithTag(screen->view(), 12));
    m_navigation->pushViewController(new bvt::ViewController, false);
    m_navigation->popViewControllerAnimated(false)->deleteLater();
    QTRY_COMPARE(screen->tableData().size(), 6);
    QVERIFY(!bvt::viewWithTag(screen->view(), 12));
}

void TestPreferences::eachAppearanceFetchesAndAppends()
{
    BVTNotifyPreferencesViewController *screen = showFilled();
    QCOMPARE(screen->tableData().size(), 3);
    m_navigation->pushViewController(new bvt::ViewController, false); // covered
    m_navigation->popViewControllerAnimated(false)->deleteLater();    // shown again
    QTRY_COMPARE(screen->tableData().size(), 6);
    QCOMPARE(m_local->requestsFor("/preferences").size(), 2);
    QCOMPARE(screen->tableView()->numberOfSections(), 6);
    QCOMPARE(screen->tableData().mid(3), screen->tableData().mid(0, 3));
}

void TestPreferences::sectionsAndRowsHaveTheirGeometry()
{
    BVTNotifyPreferencesViewController *screen = showFilled();
    QCOMPARE(screen->tableData().size(), 3);
    bvt::TableView *table = screen->tableView();
    QCOMPARE(table->rectForHeaderInSection(0), QRectF(0, 0, table->viewport()->width(), 50));
    QCOMPARE(table->rectForRowAtIndexPath({0, 1}).top(), 50.0 + 60);
    QCOMPARE(table->rectForRowAtIndexPath({0, 1}).height(), 60.0);
    QCOMPARE(table->rectForHeaderInSection(1).top(), 50.0 + 2 * 60); // no footer space

    QWidget *header = table->headerViewForSection(1);
    QVERIFY(header);
    QCOMPARE(header->height(), 50);
    QCOMPARE(header->palette().color(QPalette::Window), QColor::fromRgbF(0.98f, 0.98f, 0.98f));
    auto *title = header->findChild<QLabel *>();
    QCOMPARE(title->text(), "Category 1");
    QCOMPARE(title->geometry(), QRect(15, 24, table->width(), 16));
    QCOMPARE(title->palette().color(QPalette::WindowText), QColor::fromRgbF(0.64f, 0.64f, 0.64f));

    bvt::TableViewCell *cell = table->cellForRowAtIndexPath({0, 0});
    QCOMPARE(cell->height(), 60);
    auto *label = cell->findChild<QLabel *>();
    QCOMPARE(label->geometry(), QRect(15, 0, 220, 60));
    QVERIFY(label->font().bold());
    QCOMPARE(label->font().pixelSize(), 14);
    QCOMPARE(label->palette().color(QPalette::WindowText), QColor::fromRgbF(0.26f, 0.26f, 0.26f));
    QCOMPARE(switchOf(cell)->onTintColor(), QColor::fromRgbF(0.6f, 0.85f, 0.38f));
    QCOMPARE(switchOf(cell)->accessibleName(), "Preference 0.0");
    QVERIFY(switchOf(cell)->isOn());
    QVERIFY(!switchOf(table->cellForRowAtIndexPath({0, 1}))->isOn());

    // Selecting a row leaves no row selected and the switch as it was.
    QTest::mouseClick(cell, Qt::LeftButton, {}, QPoint(100, 30));
    QVERIFY(table->indexPathsForSelectedRows().isEmpty());
    QVERIFY(switchOf(cell)->isOn());

    // The colours are the ones painted, not only the ones set.
    const QImage shot = m_window->widget()->grab().toImage();
    QVERIFY(shot.save(QCoreApplication::applicationDirPath() + "/preferences-screen.png"));
    const auto painted = [&](int x, int y) {
        return shot.pixelColor(header->mapTo(m_window->widget(), QPoint(x, y)));
    };
    QCOMPARE(painted(200, 5), QColor(250, 250, 250));
    QCOMPARE(painted(200, 49), QColor(250, 250, 250));
    // The hairline lies just below the header, across the table: half a point of grey 222, which
    // at one pixel a point is blended half and half with the row's white (238.5).
    for (int x : {0, 200, header->width() - 1}) {
        const QColor line = painted(x, 50);
        QVERIFY2(line.red() == line.green() && line.green() == line.blue() && line.red() >= 222
                         && line.red() <= 242,
                 qPrintable(line.name()));
    }
}

void TestPreferences::flipSendsTheRowsPreference_data()
{
    QTest::addColumn<int>("row");
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("state");
    QTest::newRow("on to off") << 0 << "/preferences/disable"
                               << "OFF";
    QTest::newRow("off to on") << 1 << "/preferences/enable"
                               << "ON";
}

void TestPreferences::flipSendsTheRowsPreference()
{
    QFETCH(int, row);
    QFETCH(QString, path);
    QFETCH(QString, state);

    BVTNotifyPreferencesViewController *screen = showFilled();
    QCOMPARE(screen->tableData().size(), 3);
    BVTNotifySwitch *toggle = switchOf(screen->tableView()->cellForRowAtIndexPath({2, row}));
    m_log->clear();
    QTest::mouseClick(toggle, Qt::LeftButton);
    QTRY_COMPARE(m_local->requestsFor(path).size(), 1);
    QCOMPARE(m_log->lines().mid(0, 2),
             QStringList({"The switch is " + state,
                          QStringLiteral("The switch is for c2:p%1").arg(row)}));
    const QJsonArray document = m_local->service().preferenceDocument(BVT::currentDevice());
    const QJsonObject stored = document[2]["preferences"][row].toObject();
    QCOMPARE(stored["enabled"].toBool(), state == "ON");
}

void TestPreferences::reusedCellKeepsItsOldContent()
{
    QVERIFY(m_local->service().setCatalogue(catalogue(10, 10)));
    auto *screen = new BVTNotifyPreferencesViewController;
    m_navigation->pushViewController(screen, false);
    QTRY_COMPARE(screen->tableData().size(), 10);
    bvt::TableView *table = screen->tableView();
    const QString first = labelText(table->cellForRowAtIndexPath({0, 0}));
    QCOMPARE(first, "Preference 0.0");

    table->scrollToRowAtIndexPath({5, 0});
    bvt::TableViewCell *reused = table->cellForRowAtIndexPath({5, 0});
    QVERIFY(reused);
    // Built for a row near the top, it still shows that row.
    QVERIFY(labelText(reused) != "Preference 5.0");
    QVERIFY(labelText(reused).startsWith("Preference 0."));
}

void TestPreferences::rotationRefitsTheTable()
{
    BVTNotifyPreferencesViewController *screen = showFilled();
    QCOMPARE(screen->tableData().size(), 3);
    bvt::Screen::mainScreen().setPhoneSize(phone.transposed());
    QTRY_COMPARE(screen->view()->width(), 667);
    QCOMPARE(screen->tableView()->geometry(), QRect(QPoint(0, 0), screen->view()->size()));
    bvt::Screen::mainScreen().setPhoneSize(phone);
    QTRY_COMPARE(screen->view()->width(), 375);
    QCOMPARE(screen->tableView()->geometry(), QRect(QPoint(0, 0), screen->view()->size()));
}

void TestPreferences::oddDocumentsRenderWithoutCrash_data()
{
    QTest::addColumn<QByteArray>("document");
    QTest::addColumn<int>("rows");
    QTest::addColumn<QString>("label");
    QTest::addColumn<bool>("on");

    QTest::newRow("string enabled 1") << QByteArray(
            R"([{"name":"C","key":"c","preferences":[{"name":"P","key":"p","enabled":"1"}]}])")
                                      << 1 << "P" << true;
    QTest::newRow("string enabled true") << QByteArray(
            R"([{"name":"C","key":"c","preferences":[{"name":"P","key":"p","enabled":"true"}]}])")
                                         << 1 << "P" << false;
    QTest::newRow("number name, no key")
            << QByteArray(R"([{"name":7,"preferences":[{"name":42,"enabled":1}]}])") << 1 << "42"
            << true;
    QTest::newRow("preferences not a list")
            << QByteArray(R"([{"name":"C","key":"c","preferences":"many"}])") << 0 << "" << false;
    QTest::newRow("category not an object") << QByteArray(R"([17])") << 0 << "" << false;
}

void TestPreferences::oddDocumentsRenderWithoutCrash()
{
    QFETCH(QByteArray, document);
    QFETCH(int, rows);
    QFETCH(QString, label);
    QFETCH(bool, on);

    bvtsim::Fault odd;
    odd.status = 200;
    odd.body = document;
    m_local->service().setFault("GET", "/preferences", odd);
    auto *screen = new BVTNotifyPreferencesViewController;
    m_navigation->pushViewController(screen, false);
    QTRY_COMPARE(screen->tableData().size(), 1);
    QCOMPARE(screen->tableView()->numberOfRowsInSection(0), rows);
    m_window->widget()->grab(); // paints every part
    if (rows == 0)
        return;
    bvt::TableViewCell *cell = screen->tableView()->cellForRowAtIndexPath({0, 0});
    QCOMPARE(labelText(cell), label);
    QCOMPARE(switchOf(cell)->isOn(), on);

    // A flip of a row whose keys are missing sends nothing.
    QTest::mouseClick(switchOf(cell), Qt::LeftButton);
    QTest::qWait(50);
    const bool keyed = !switchOf(cell)->category().isNull();
    QCOMPARE(m_local->requestsFor(on ? "/preferences/disable" : "/preferences/enable").size(),
             keyed ? 1 : 0);
}

void TestPreferences::doneDismissesOnlyAPopup()
{
    BVTNotifyPreferencesViewController plain;
    plain.didClickDone(); // not in a popup: nothing happens

    BVTNotifyPreferencesViewController *screen = BVTNotifyPreferencesViewController::initInPopup();
    auto *popup = new bvt::PopupController(screen);
    QSignalSpy dismissed(popup, &bvt::PopupController::dismissed);
    popup->presentInViewController(m_navigation->topViewController());
    QTRY_COMPARE(screen->tableData().size(), 3);
    QCOMPARE(screen->view()->size(), QSize(345, 400));
    QVERIFY(!popup->isNavigationBarHidden());
    const QImage shot = m_window->widget()->grab().toImage();
    QVERIFY(shot.save(QCoreApplication::applicationDirPath() + "/preferences-popup.png"));
    screen->doneButton()->trigger();
    QCOMPARE(dismissed.size(), 1);
}

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    QCoreApplication::setOrganizationName("BrevantiTests");
    QStandardPaths::setTestModeEnabled(true);
    TestPreferences test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_preferences.moc"
