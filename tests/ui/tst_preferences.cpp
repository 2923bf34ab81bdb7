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
#include <QToolButton>

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
    void reusedCellKeepsItsOldContent();

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
    bvtsim::Fault broken;
    broken.status = 500;
    broken.body = "down";
    m_local->service().setFault("GET", "/preferences", broken);
    coverAndUncover();
    QTRY_COMPARE(m_log->linesStartingWith("Preferences Error"),
                 QStringList("Preferences Error... ERROR: down"));
    // Neither answer filled the table: one spinner still turns, centred, 62 from the top.
    const auto spinners = screen->view()->findChildren<bvt::ActivityIndicatorView *>();
    QCOMPARE(spinners.size(), 1);
    QCOMPARE(bvt::viewWithTag(screen->view(), 12), spinners.first());
    QVERIFY(spinners.first()->isAnimating() && spinners.first()->isVisible());
    QCOMPARE(spinners.first()->center(), QPoint(screen->view()->width() / 2, 62));
    QVERIFY(screen->tableData().isEmpty());

    // A document: the spinner goes for good; every appearance fetches and appends.
    m_local->service().clearFaults();
    QVERIFY(m_local->service().setCatalogue(catalogue()));
    coverAndUncover();
    QTRY_COMPARE(screen->tableData().size(), 3);
    QVERIFY(!bvt::viewWithTag(screen->view(), 12));
    coverAndUncover();
    QTRY_COMPARE(screen->tableData().size(), 6);
    QVERIFY(!bvt::viewWithTag(screen->view(), 12));
    QCOMPARE(m_local->requestsFor("/preferences").size(), 4);
    QCOMPARE(screen->tableView()->numberOfSections(), 6);
    QCOMPARE(screen->tableData().mid(3), screen->tableData().mid(0, 3));
}

void TestPreferences::rowsAndHeadersAsDesignedAndRefittedOnTurns()
{
    BVTNotify::openPreferencesWithNavigationController(nullptr); // made and dropped
    Preferences *screen = open();
    QVERIFY(screen && m_phone->navigation()->navigationBar()->title() == "Notifications");
    QVERIFY(screen->contentSizeInPopup().isEmpty()
            && screen->landscapeContentSizeInPopup().isEmpty());
    QVERIFY(!screen->doneButton()
            && m_phone->navigation()->navigationBar()->rightButton()->isHidden());
    screen->didClickDone(); // not in a popup: nothing happens
    QTRY_COMPARE(screen->tableData().size(), 3);
    bvt::TableView *table = screen->tableView();
    QCOMPARE(table->rectForHeaderInSection(1).top(), 50.0 + 2 * 60); // no footer space

    QWidget *header = table->headerViewForSection(1);
    auto *title = header->findChild<QLabel *>();
    QCOMPARE(title->text(), "Category 1");
    QCOMPARE(title->geometry(), QRect(15, 24, table->width(), 16));
    QVERIFY(title->font().bold() && title->font().pixelSize() == 14);
    QCOMPARE(title->palette().color(QPalette::WindowText), QColor::fromRgbF(0.64f, 0.64f, 0.64f));

    bvt::TableViewCell *cell = table->cellForRowAtIndexPath({0, 0});
    QCOMPARE(cell->selectionStyle(), bvt::TableViewCell::SelectionStyle::None);
    auto *label = cell->findChild<QLabel *>();
    QCOMPARE(label->geometry(), QRect(15, 0, 220, 60));
    QVERIFY(label->font().bold() && label->font().pixelSize() == 14);
    QCOMPARE(label->palette().color(QPalette::WindowText), QColor::fromRgbF(0.26f, 0.26f, 0.26f));
    QCOMPARE(switchOf(cell)->accessibleName(), "Preference 0.0");

    // Selecting a row leaves no row selected and the switch as it was.
    QTest::mouseClick(cell, Qt::LeftButton, {}, QPoint(100, 30));
    QVERIFY(table->indexPathsForSelectedRows().isEmpty() && switchOf(cell)->isOn());

    // The colours are the ones painted, not only the ones set.
    const QImage shot = m_phone->widget()->grab().toImage();
    const auto painted = [&](QWidget *widget, int x, int y) {
        return shot.pixelColor(widget->mapTo(m_phone->widget(), QPoint(x, y)));
    };
    QCOMPARE(painted(header, 200, 5), QColor(250, 250, 250));
    QCOMPARE(painted(header, 200, 49), QColor(250, 250, 250));
    QCOMPARE(painted(switchOf(cell), 10, 15).rgb(), QColor::fromRgbF(0.6f, 0.85f, 0.38f).rgb());
    // The hairline lies just below the header: half a point of grey 222, which at one pixel a
    // point is blended half and half with the row's white (238.5).
    const QColor line = painted(header, 200, 50);
    QVERIFY2(line == QColor(line.red(), line.red(), line.red()) && qAbs(line.red() - 232) <= 10,
             qPrintable(line.name()));

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
    QTest::addColumn<QString>("label");       // none: the section has no rows
    QTest::addColumn<bool>("on");             // before the flip
    QTest::addColumn<QString>("keys");        // as logged; sent only when both are there
    const QByteArray p =
            R"([{"name":"C","key":"c","preferences":[{"name":"P","key":"p","enabled":)";
    QTest::newRow("on to off") << QByteArray() << 0 << "Preference 2.0" << true << "c2:p0";
    QTest::newRow("off to on") << QByteArray() << 1 << "Preference 2.1" << false << "c2:p1";
    QTest::newRow("enabled \"1\"") << p + R"("1"}]}])" << 0 << "P" << true << "c:p";
    QTest::newRow("enabled \"true\"") << p + R"("true"}]}])" << 0 << "P" << false << "c:p";
    QTest::newRow("number name, no keys")
            << QByteArray(R"([{"name":7,"preferences":[{"name":42,"enabled":1}]}])") << 0 << "42"
            << true << "(null):(null)";
    QTest::newRow("preferences not a list") << QByteArray(R"([{"name":"C","preferences":"many"}])")
                                            << 0 << QString() << false << "";
    QTest::newRow("category not an object") << QByteArray("[17]") << 0 << QString() << false << "";
}

void TestPreferences::flipSendsTheRowsPreference()
{
    QFETCH(QByteArray, document);
    QFETCH(int, row);
    QFETCH(QString, label);
    QFETCH(bool, on);
    QFETCH(QString, keys);
    bvtsim::Fault odd;
    odd.status = 200;
    odd.body = document;
    if (!document.isEmpty())
        m_local->service().setFault("GET", "/preferences", odd);
    Preferences *screen = open();
    QTRY_VERIFY(!screen->tableData().isEmpty());
    const int section = int(screen->tableData().size()) - 1;
    m_phone->widget()->grab(); // paints every part
    if (label.isNull()) {
        QCOMPARE(screen->tableView()->numberOfRowsInSection(section), 0);
        return;
    }
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
    if (document.isEmpty()) {
        const QJsonArray stored = m_local->service().preferenceDocument(BVT::currentDevice());
        QCOMPARE(stored[section]["preferences"][row]["enabled"].toBool(), !on);
    }
}

void TestPreferences::reusedCellKeepsItsOldContent()
{
    QVERIFY(m_local->service().setCatalogue(catalogue(10, 10)));
    Preferences *screen = open();
    QTRY_COMPARE(screen->tableData().size(), 10);
    bvt::TableView *table = screen->tableView();
    QCOMPARE(labelText(table->cellForRowAtIndexPath({0, 0})), "Preference 0.0");
    table->scrollToRowAtIndexPath({5, 0});
    // Built for a row near the top, the cell still shows that row.
    QVERIFY(labelText(table->cellForRowAtIndexPath({5, 0})).startsWith("Preference 0."));
}

QTEST_MAIN(TestPreferences)

#include "tst_preferences.moc"
