#include "localservice.h"
#include "logcapture.h"
#include "phonewindow.h"

#include <Brevanti/BVT.h>
#include <Brevanti/BVTNotify.h>
#include <Brevanti/BVTNotifyPreferencesViewController.h>
#include <Brevanti/platform/ActivityIndicatorView.h>
#include <Brevanti/platform/ViewTag.h>

#include <QJsonArray>
#include <QLabel>
#include <QRegularExpression>
#include <QTest>

using Preferences = BVTNotifyPreferencesViewController;

namespace {

// Categories of preferences; the first preference of each is on.
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
    return cell->findChild<QLabel *>()->text();
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
    void spinnerTurnsUntilADocumentAndEachAppearanceAppends();
    void rowsAndHeadersAsDesignedAndRefittedOnTurns();
    void flipSendsTheRowsPreference_data();
    void flipSendsTheRowsPreference();

private:
    Preferences *open();    // the full-screen form, pushed on the window's navigation stack
    void coverAndUncover(); // so that the screen appears again

    std::unique_ptr<LocalService> m_local;
    std::unique_ptr<LogCapture> m_log; // made once QtTest has its own message handler
    std::unique_ptr<PhoneWindow> m_phone;
};

void TestPreferences::initTestCase()
{
    m_local = std::make_unique<LocalService>();
    QVERIFY(PhoneWindow::startLibraryWithNewDevice());
    m_log = std::make_unique<LogCapture>();
    BVT::setCurrentDeviceToken("00"); // no permission requests from the switches
}

void TestPreferences::init()
{
    m_local->reset();
    QVERIFY(m_local->service().setCatalogue(catalogue()));
    LogCapture::clear();
    m_phone = std::make_unique<PhoneWindow>();
}

Preferences *TestPreferences::open()
{
    BVTNotify::openPreferencesWithNavigationController(m_phone->navigation());
    return qobject_cast<Preferences *>(m_phone->navigation()->topViewController());
}

void TestPreferences::coverAndUncover()
{
    m_phone->navigation()->pushViewController(new bvt::ViewController, false);
    m_phone->navigation()->popViewControllerAnimated(false)->deleteLater();
}

void TestPreferences::spinnerTurnsUntilADocumentAndEachAppearanceAppends()
{
    QVERIFY(m_local->service().setCatalogue(QJsonArray()));
    Preferences *screen = open();
    QTRY_COMPARE(m_local->requestsFor("/preferences").size(), 1); // answered: an empty document
    m_local->service().setFault("GET", "/preferences", bvtsim::Fault{0, 500, "down", {}});
    coverAndUncover();
    QTRY_COMPARE(m_log->linesStartingWith("Preferences Error"),
                 QStringList("Preferences Error... ERROR: down"));
    // Neither answer filled the table: one spinner still turns.
    const auto spinners = screen->view()->findChildren<bvt::ActivityIndicatorView *>();
    QVERIFY(spinners.size() == 1 && bvt::viewWithTag(screen->view(), 12) == spinners.first());
    QVERIFY(spinners.first()->isAnimating() && spinners.first()->isVisible());

    // A document: the spinner goes for good; every appearance fetches and appends.
    m_local->service().clearFaults();
    QVERIFY(m_local->service().setCatalogue(catalogue()));
    coverAndUncover();
    QTRY_COMPARE(screen->tableData().size(), 3);
    coverAndUncover();
    QTRY_COMPARE(screen->tableData().size(), 6);
    QVERIFY(!bvt::viewWithTag(screen->view(), 12));
    QCOMPARE(screen->tableView()->numberOfSections(), 6);
    QCOMPARE(screen->tableData().mid(3), screen->tableData().mid(0, 3));
}

void TestPreferences::rowsAndHeadersAsDesignedAndRefittedOnTurns()
{
    QVERIFY(m_local->service().setCatalogue(catalogue(10, 10)));
    BVTNotify::openPreferencesWithNavigationController(nullptr); // made and dropped
    Preferences *screen = open();
    QVERIFY(screen && m_phone->navigation()->navigationBar()->title() == "Notifications");
    QVERIFY(!screen->doneButton() && screen->contentSizeInPopup().isEmpty());
    screen->didClickDone(); // not in a popup: nothing happens
    QTRY_COMPARE(screen->tableData().size(), 10);
    bvt::TableView *table = screen->tableView();
    QCOMPARE(table->rectForHeaderInSection(1).top(), 50.0 + 10 * 60); // no footer space
    QWidget *header = table->headerViewForSection(0);
    QCOMPARE(labelText(header), "Category 0");
    bvt::TableViewCell *cell = table->cellForRowAtIndexPath({0, 0});
    QCOMPARE(cell->selectionStyle(), bvt::TableViewCell::SelectionStyle::None);
    QCOMPARE(switchOf(cell)->accessibleName(), "Preference 0.0");

    // Selecting a row leaves no row selected and the switch as it was.
    QTest::mouseClick(cell, Qt::LeftButton, {}, QPoint(100, 30));
    QVERIFY(table->indexPathsForSelectedRows().isEmpty() && switchOf(cell)->isOn());

    // As painted: the header's last line is its own background; the hairline lies just below it,
    // half a point of grey 222 blended with the row's white (238.5).
    const QImage shot = m_phone->widget()->grab().toImage();
    const auto painted = [&](int y) {
        return shot.pixelColor(header->mapTo(m_phone->widget(), QPoint(200, y)));
    };
    QCOMPARE(painted(49), QColor(250, 250, 250));
    const QColor line = painted(50);
    QVERIFY2(line == QColor(line.red(), line.red(), line.red()) && qAbs(line.red() - 232) <= 10,
             qPrintable(line.name()));

    // Scrolled down, a cell built for a row near the top still shows that row.
    table->scrollToRowAtIndexPath({5, 0});
    QVERIFY(labelText(table->cellForRowAtIndexPath({5, 0})).startsWith("Preference 0."));
    for (const QSize &size : {PhoneWindow::portrait.transposed(), PhoneWindow::portrait}) {
        bvt::Screen::mainScreen().setPhoneSize(size);
        QTRY_COMPARE(screen->view()->width(), size.width());
        QCOMPARE(table->geometry(), QRect(QPoint(0, 0), screen->view()->size()));
    }
}

void TestPreferences::flipSendsTheRowsPreference_data()
{
    QTest::addColumn<QByteArray>("document"); // served instead of the catalogue's, if any
    QTest::addColumn<int>("row");             // in the last section
    QTest::addColumn<QString>("label");
    QTest::addColumn<bool>("on");      // before the flip
    QTest::addColumn<QString>("keys"); // as logged; sent only when both are there
    QTest::newRow("on to off") << QByteArray() << 0 << "Preference 2.0" << true << "c2:p0";
    QTest::newRow("off to on") << QByteArray() << 1 << "Preference 2.1" << false << "c2:p1";
    QTest::newRow("number name, no keys")
            << QByteArray(R"([{"name":7,"preferences":[{"name":42,"enabled":1}]}])") << 0 << "42"
            << true << "(null):(null)";
}

void TestPreferences::flipSendsTheRowsPreference()
{
    QFETCH(QByteArray, document);
    QFETCH(int, row);
    QFETCH(QString, label);
    QFETCH(bool, on);
    QFETCH(QString, keys);
    if (!document.isEmpty())
        m_local->service().setFault("GET", "/preferences", bvtsim::Fault{0, 200, document, {}});
    Preferences *screen = open();
    QTRY_VERIFY(!screen->tableData().isEmpty());
    const int section = int(screen->tableData().size()) - 1;
    m_phone->widget()->grab(); // paints every part
    bvt::TableViewCell *cell = screen->tableView()->cellForRowAtIndexPath({section, row});
    BVTNotifySwitch *toggle = switchOf(cell);
    QCOMPARE(labelText(cell), label);
    QCOMPARE(toggle->isOn(), on);
    const bool sent = !keys.contains("(null)");
    if (!sent)
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("^switch not sent"));
    LogCapture::clear();
    QTest::mouseClick(toggle, Qt::LeftButton);
    const QString state = on ? "OFF" : "ON";
    QCOMPARE(m_log->lines().mid(0, 2),
             QStringList({"The switch is " + state, "The switch is for " + keys}));
    if (!sent)
        return;
    QTRY_COMPARE(m_local->service().requests().size(), 2); // the fetch and the flip
    QCOMPARE(m_local->service().requests().last().path,
             on ? "/preferences/disable" : "/preferences/enable");
    const QJsonArray stored = m_local->service().preferenceDocument(BVT::currentDevice());
    QCOMPARE(stored[section]["preferences"][row]["enabled"].toBool(), !on);
}

QTEST_MAIN(TestPreferences)

#include "tst_preferences.moc"
