#include "localservice.h"
#include "logcapture.h"
#include "phonewindow.h"
#include "readability.h"
#include "standinoperatingsystem.h"

#include <Brevanti/BVT.h>
#include <Brevanti/BVTNotify.h>
#include <Brevanti/BVTNotifyPreferencesViewController.h>
#include <Brevanti/BVTNotifyRequestViewController.h>
#include <Brevanti/Client.h>
#include <Brevanti/platform/ActivityIndicatorView.h>
#include <Brevanti/platform/PopupController.h>
#include <Brevanti/platform/TabBarController.h>
#include <Brevanti/platform/ViewTag.h>

#include <QtTest>
#include <QtWidgets>

using Request = BVTNotifyRequestViewController;
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

// A dark palette, as a host in dark mode has: window, text, base and mid colours dark or light.
QPalette darkPalette()
{
    const QColor light(0xe6, 0xe6, 0xe6), dark(0x1e, 0x1e, 0x1e), base(0x2a, 0x2a, 0x2a);
    return QPalette(light, base, light, dark, QColor(0x55, 0x55, 0x55), light, light, base, dark);
}

// Each text a view shows whole (labels and buttons; not a row half scrolled out), measured from
// the window's pixels, inside the borders a button may have.
QList<std::pair<QWidget *, readability::Measure>> shownTexts(QWidget *view)
{
    QWidget *window = view->window();
    const QImage image = window->grab().toImage();
    QList<std::pair<QWidget *, readability::Measure>> texts;
    for (QWidget *widget : view->findChildren<QWidget *>()) {
        const auto *label = qobject_cast<QLabel *>(widget);
        const auto *button = qobject_cast<QAbstractButton *>(widget);
        const QString text = label ? label->text() : button ? button->text() : QString();
        if (text.trimmed().isEmpty() || !widget->isVisibleTo(window)
            || widget->visibleRegion().boundingRect() != widget->rect())
            continue;
        const QRect area(widget->mapTo(window, QPoint()), widget->size());
        texts.append({widget, readability::measure(image, area.adjusted(3, 3, -3, -3))});
    }
    return texts;
}

} // namespace

class TestUi : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase()
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

    // Every test starts with no device token stored: the card shows only then.
    void init()
    {
        QSettings().remove(QStringLiteral("com.brevanti.ios.BVTDeviceToken"));
        m_local->reset();
        QVERIFY(m_local->service().setCatalogue(catalogue()));
        m_system.clear();
        LogCapture::clear();
        m_phone = std::make_unique<PhoneWindow>();
    }

    void cardTakesTheGivenLook_data()
    {
        QTest::addColumn<int>("given"); // none; colour; colour, icon and header; all four
        QTest::addColumn<QColor>("colour");
        QTest::addColumn<QString>("header");
        QTest::addColumn<QString>("subHeader");
        const QString header = BVTNotify::defaultNotificationHeader();
        const QString sub = BVTNotify::defaultNotificationSubHeader();
        QTest::newRow("none") << 0 << QColor::fromRgbF(0.23f, 0.36f, 0.59f) << header << sub;
        QTest::newRow("colour") << 1 << QColor(Qt::red) << header << sub;
        QTest::newRow("nil colour, icon, nil header") << 2 << QColor() << QString() << sub;
        QTest::newRow("all four") << 3 << QColor(Qt::blue) << QString("Header") << QString("Sub");
    }

    void cardTakesTheGivenLook()
    {
        QFETCH(int, given);
        QFETCH(QColor, colour);
        QFETCH(QString, header);
        QFETCH(QString, subHeader);
        const QPixmap icon(8, 8);
        const std::function<void()> forms[] = {
                [] { BVTNotify::requestCustomPreferences(); },
                [&] { BVTNotify::requestCustomPreferencesWithColor(colour); },
                [&] { BVTNotify::requestCustomPreferencesWithColor(colour, icon, header); },
                [&] {
                    BVTNotify::requestCustomPreferencesWithColor(colour, icon, header, subHeader);
                }};
        forms[given]();
        QVERIFY(shownPopup() && m_log->lines().isEmpty());
        auto *request = qobject_cast<Request *>(shownPopup()->topViewController());
        QCOMPARE(request->title(), "Notifications");
        QCOMPARE(request->headerLabel()->text(), header);
        QCOMPARE(request->subheaderLabel()->text(), subHeader);
        QVERIFY(request->alertIcon()->pixmap().isNull());         // an icon given is not shown
        QCOMPARE(request->contentSizeInPopup(), QSize(345, 460)); // from the 375 x 667 screen
        QCOMPARE(request->landscapeContentSizeInPopup(), QSize(637, 340));
        const QString css = colour.isValid() ? colour.name(QColor::HexArgb) : "transparent";
        QVERIFY(request->headerLabel()->styleSheet().contains("color: " + css));

        // The bar, hidden on this card and shown over the preferences, has a white title.
        const bvt::PopupNavigationBar *bar = shownPopup()->navigationBar();
        QVERIFY(!bar->isVisible());
        // The screen behind is dimmed.
        QCOMPARE(shownPopup()->backgroundView()->palette().color(QPalette::Window).alphaF(), 0.8f);
        QCOMPARE(bar->findChild<QLabel *>()->palette().color(QPalette::WindowText),
                 QColor(Qt::white));
    }

    void buttons_data()
    {
        QTest::addColumn<int>("button");        // the row's name is the button's text
        QTest::addColumn<QStringList>("asked"); // of the system
        QTest::addColumn<bool>("german");       // the host installs the tests' German translation
        QTest::addColumn<QVariantList>("outcomes"); // the client's, once asked again
        using Client = bvt::Client;
        QTest::newRow("Keep Me Updated")
                << 0 << QStringList({"settings:7", "remote"}) << false
                << QVariantList{Client::CardKeptUpdated, Client::CardNotShown};
        QTest::newRow("Customize Notifications")
                << 1 << QStringList() << false << QVariantList{Client::CardCustomized};
        QTest::newRow("No Thanks")
                << 2 << QStringList() << false << QVariantList{Client::CardDeclined};
        QTest::newRow("Mitteilungen anpassen")
                << 1 << QStringList() << true << QVariantList{Client::CardCustomized};
    }

    void buttons()
    {
        QFETCH(int, button);
        QFETCH(bool, german);
        QTranslator translator; // before the card is made, as a host does; removed when destroyed
        if (german)
            QVERIFY(translator.load(":/i18n/brevanti_de")
                    && QCoreApplication::installTranslator(&translator));
        QSignalSpy outcomes(bvt::Client::instance(), &bvt::Client::cardFinished);
        // The client's call shows the same card.
        german ? bvt::Client::instance()->requestCustomPreferences()
               : BVTNotify::requestCustomPreferences();
        bvt::PopupController *popup = shownPopup();
        auto *request = qobject_cast<Request *>(popup->topViewController());
        QSignalSpy dismissed(popup, &bvt::PopupController::dismissed);
        const QList<QPushButton *> buttons = {request->keepMeUpdatedButton(),
                                              request->customizeButton(),
                                              request->noThanksButton()};
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
            QVERIFY(bar->isVisible() && bar->title() == "Notifications"
                    && bar->rightButton()->isVisible());
            QCOMPARE(bar->rightButton()->text(), german ? "Fertig" : "Done");
            QTRY_VERIFY(!preferences->tableData().isEmpty());
            // Back to the card: the bar is hidden again and the texts applied again.
            request->headerLabel()->setText("changed");
            delete popup->popViewControllerAnimated(false);
            QVERIFY(!bar->isVisible());
            QCOMPARE(request->headerLabel()->text(),
                     german ? "Bleib auf dem Laufenden" : "Stay Up To Date");
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
        QVariantList told;
        for (const QVariantList &signal : std::as_const(outcomes))
            told << signal.value(0).toInt();
        QTEST(told, "outcomes");
    }

    // A host that asks for it has the card, its preferences and the pushed screen (under the
    // host's own navigation bar) in its palette, light or dark, every text readable; a host that
    // does not keeps the screens' own white.
    void screensFollowTheHostsPalette_data()
    {
        QTest::addColumn<bool>("follow");
        QTest::addColumn<QPalette>("palette");
        QTest::newRow("light host") << true << QApplication::palette();
        QTest::newRow("dark host") << true << darkPalette();
        QTest::newRow("dark host, own colours") << false << darkPalette();
    }

    void screensFollowTheHostsPalette()
    {
        QFETCH(bool, follow);
        QFETCH(QPalette, palette);
        const QPalette before = QApplication::palette();
        const auto restore = qScopeGuard([&before] {
            QApplication::setPalette(before);
            bvt::Client::instance()->setWidgetScreensFollowPalette(false);
        });
        QApplication::setPalette(palette);
        QSignalSpy changed(bvt::Client::instance(),
                           &bvt::Client::widgetScreensFollowPaletteChanged);
        bvt::Client::instance()->setWidgetScreensFollowPalette(follow);
        QCOMPARE(changed.size(), int(follow));
        m_phone = std::make_unique<PhoneWindow>();

        // Every text reads, on the palette's window or base colour or on the card's tint.
        const QList<QRgb> grounds{palette.color(QPalette::Window).rgb(),
                                  palette.color(QPalette::Base).rgb(),
                                  BVTNotify::defaultNotificationColor().rgb()};
        QStringList unreadable;
        int read = 0;
        const auto check = [&](QWidget *view, const QString &screen) {
            for (const auto &[widget, measured] : shownTexts(view)) {
                const QString where = QTest::currentDataTag() + (", " + screen);
                const QString text = widget->property("text").toString();
                unreadable << readability::unreadable(where, text, measured);
                if (!grounds.contains(measured.background.rgb()))
                    unreadable << where + ": \"" + text + "\" on " + measured.background.name();
                ++read;
            }
            unreadable.removeAll(QString());
        };
        BVTNotify::requestCustomPreferences();
        bvt::PopupController *popup = shownPopup();
        auto *request = qobject_cast<Request *>(popup->topViewController());
        const readability::Measure subHeader = readability::measure(
                m_phone->widget()->grab().toImage(), m_phone->frameOf(request->subheaderLabel()));
        QCOMPARE(subHeader.background,
                 follow ? palette.color(QPalette::Window) : QColor(Qt::white));
        if (!follow)
            return; // the screens' own look, tested by pixels elsewhere
        check(popup->containerView(), "the card");
        request->customizeButton()->click();
        auto *inCard = qobject_cast<Preferences *>(popup->topViewController());
        QTRY_VERIFY(!inCard->tableData().isEmpty());
        check(popup->containerView(), "the preferences in the card");
        QTest::mouseClick(popup->navigationBar()->rightButton(), Qt::LeftButton);
        Preferences *pushed = open();
        QTRY_VERIFY(!pushed->tableData().isEmpty());
        check(pushed->view(), "the preferences screen");
        QVERIFY2(unreadable.isEmpty(), qPrintable(unreadable.join('\n')));
        QVERIFY(read > 15);
    }

    // From the key window's root through tabs, stacks and presented controllers; the card shows
    // over the top controller, or nowhere when there is none.
    void topControllerWalk()
    {
        auto *navigation = new bvt::NavigationController(new bvt::ViewController);
        auto *top = new bvt::ViewController;
        navigation->pushViewController(top, false);
        auto *tabs = new bvt::TabBarController;
        tabs->setViewControllers({new bvt::ViewController, navigation});
        tabs->setSelectedIndex(1);
        m_phone = std::make_unique<PhoneWindow>(tabs);
        QCOMPARE(BVTNotify::topViewController(), top);
        BVTNotify::requestCustomPreferences();
        QCOMPARE(shownPopup()->parent(), top);
        QCOMPARE(BVTNotify::topViewController(top), top); // a plain controller is its own top
        m_phone = std::make_unique<PhoneWindow>(new bvt::NavigationController(nullptr));
        QCOMPARE(BVTNotify::topViewController(), nullptr);
        BVTNotify::requestCustomPreferences();
        QVERIFY(!shownPopup());
    }

    void spinnerTurnsUntilADocumentAndEachAppearanceAppends()
    {
        QVERIFY(m_local->service().setCatalogue(QJsonArray()));
        Preferences *screen = open();
        QTRY_COMPARE(m_local->requestsFor("/preferences").size(), 1); // answered: an empty document
        m_local->service().setFault("GET", "/preferences", bvtsim::Fault::answer(500, "down"));
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

    void rowsAndHeadersAsDesignedAndRefittedOnTurns()
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
        const QFont font = header->findChild<QLabel *>()->font();
        QVERIFY(font.bold() && font.pixelSize() == 14);
        bvt::TableViewCell *cell = table->cellForRowAtIndexPath({0, 0});
        QCOMPARE(cell->selectionStyle(), bvt::TableViewCell::SelectionStyle::None);
        QCOMPARE(switchOf(cell)->accessibleName(), "Preference 0.0");
        QCOMPARE(switchOf(cell)->onTintColor(), QColor::fromRgbF(0.6f, 0.85f, 0.38f));
        const QLabel *name = cell->findChild<QLabel *>();
        QVERIFY(name->geometry() == QRect(15, 0, 220, 60)
                && name->palette().color(QPalette::WindowText)
                        == QColor::fromRgbF(0.26f, 0.26f, 0.26f));

        // Selecting a row leaves no row selected and the switch as it was.
        QTest::mouseClick(cell, Qt::LeftButton, {}, QPoint(100, 30));
        QVERIFY(table->indexPathsForSelectedRows().isEmpty() && switchOf(cell)->isOn());

        // As painted: the header's last line is its own background; the hairline lies just below
        // it, half a point of grey 222 blended with the row's white (238.5).
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

    void flipSendsTheRowsPreference_data()
    {
        QTest::addColumn<QByteArray>("document"); // served instead of the catalogue's, if any
        QTest::addColumn<int>("row");             // in the last section
        QTest::addColumn<QString>("label");
        QTest::addColumn<bool>("on");      // before the flip
        QTest::addColumn<QString>("keys"); // as logged; sent only when both are there
        QTest::newRow("on to off") << QByteArray() << 0 << "Preference 2.0" << true << "c2:p0";
        QTest::newRow("off to on") << QByteArray() << 1 << "Preference 2.1" << false << "c2:p1";
        QTest::newRow("number name, no keys")
                << QByteArray(R"([{"name":7,"preferences":[{"name":42,"enabled":1}]}])") << 0
                << "42" << true << "(null):(null)";
    }

    void flipSendsTheRowsPreference()
    {
        QFETCH(QByteArray, document);
        QFETCH(int, row);
        QFETCH(bool, on);
        QFETCH(QString, keys);
        if (!document.isEmpty())
            m_local->service().setFault("GET", "/preferences",
                                        bvtsim::Fault::answer(200, document));
        Preferences *screen = open();
        QTRY_VERIFY(!screen->tableData().isEmpty());
        const int section = int(screen->tableData().size()) - 1;
        // Painted whole; below the rows, the grouped table's own grey.
        QCOMPARE(m_phone->widget()->grab().toImage().pixelColor(100, 660), QColor(240, 240, 245));
        bvt::TableViewCell *cell = screen->tableView()->cellForRowAtIndexPath({section, row});
        BVTNotifySwitch *toggle = switchOf(cell);
        QTEST(labelText(cell), "label");
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
        const QJsonArray stored = m_local->service().preferenceDocument(BVT::currentDevice());
        QCOMPARE(stored[section]["preferences"][row]["enabled"].toBool(), !on);
    }

private:
    bvt::PopupController *shownPopup() const
    {
        for (auto *popup : m_phone->root()->findChildren<bvt::PopupController *>()) {
            if (popup->isPresented())
                return popup;
        }
        return nullptr;
    }

    // the full-screen form, pushed on the window's navigation stack
    Preferences *open()
    {
        BVT::setCurrentDeviceToken("00"); // no permission requests from the switches
        BVTNotify::openPreferencesWithNavigationController(m_phone->navigation());
        return qobject_cast<Preferences *>(m_phone->navigation()->topViewController());
    }

    // so that the screen appears again
    void coverAndUncover()
    {
        m_phone->navigation()->pushViewController(new bvt::ViewController, false);
        m_phone->navigation()->popViewControllerAnimated(false)->deleteLater();
    }

    const QByteArray m_pushToken = QByteArray(32, '*');
    std::unique_ptr<LocalService> m_local;
    std::unique_ptr<LogCapture> m_log; // made once QtTest has its own message handler
    std::unique_ptr<PhoneWindow> m_phone;
    bvtstandin::StandInOperatingSystem m_system;
};

QTEST_MAIN(TestUi)

#include "tst_ui.moc"
