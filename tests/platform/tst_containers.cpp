#include <Brevanti/platform/NavigationController.h>
#include <Brevanti/platform/PopupController.h>
#include <Brevanti/platform/Window.h>

#include <QAction>
#include <QApplication>
#include <QLabel>
#include <QScreen>
#include <QSignalSpy>
#include <QTest>
#include <QToolButton>

using namespace bvt;

namespace {

const QSize portrait(375, 667);
const QSize landscape(667, 375);
using Turns = QList<InterfaceOrientation>;

// Logs the containers' calls, in order, into a list shared by the controllers of a test.
class Probe : public ViewController
{
public:
    Probe(const QString &name, QStringList *log) : name(name), log(log)
    {
        setTitle(name);
        setContentSizeInPopup({345, 400});
        setLandscapeContentSizeInPopup({637, 315});
    }
    void viewWillAppear(bool) override
    {
        willSize = view()->size();
        log->append(name + QStringLiteral(":will"));
    }
    void viewDidAppear(bool) override { log->append(name + QStringLiteral(":did")); }
    void didRotateFromInterfaceOrientation(InterfaceOrientation from) override { turns << from; }
    void viewDidLoad() override { log->append(name + QStringLiteral(":load")); }
    QString name;
    QStringList *log;
    QList<InterfaceOrientation> turns;
    QSize willSize;
};

// A shown phone window whose root is a navigation controller.
struct Phone
{
    QStringList log;
    Window window;
    Probe *root = new Probe(QStringLiteral("root"), &log);
    NavigationController *nav = new NavigationController(root);
    Phone()
    {
        window.setRootViewController(nav);
        window.show();
    }
};

} // namespace

class TestContainers : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init() { Screen::mainScreen().setPhoneSize(portrait); }
    void cleanup() { PopupNavigationBar::appearance() = {}; }

    void navigationAndPresentationOrderViewsAndHooks()
    {
        Phone phone;
        QCOMPARE(phone.log, QStringList({"root:load", "root:will", "root:did"}));
        QCOMPARE(phone.root->view()->size(), QSize(375, 623));
        QCOMPARE(phone.root->view()->mapTo(phone.window.widget(), QPoint()), QPoint(0, 44));
        NavigationBar *bar = phone.nav->navigationBar();
        QCOMPARE(bar->title(), QStringLiteral("root"));
        auto *second = new Probe(QStringLiteral("second"), &phone.log);
        QAction edit(QStringLiteral("Edit"));
        second->navigationItem().rightBarButtonItem = &edit;
        phone.nav->pushViewController(second, true);
        QCOMPARE(second->navigationController(), phone.nav);
        QCOMPARE(second->willSize, QSize(375, 623));
        QCOMPARE(phone.log.mid(3), QStringList({"second:load", "second:will", "second:did"}));
        QVERIFY(second->view()->isVisible() && !phone.root->view()->isVisible());
        QVERIFY(bar->rightButton()->isVisible());
        QCOMPARE(bar->rightButton()->text(), QStringLiteral("Edit"));
        second->setTitle(QStringLiteral("Details"));
        phone.root->setTitle(QStringLiteral("hidden below"));
        QCOMPARE(bar->title(), QStringLiteral("Details"));
        QScopedPointer<ViewController> popped(phone.nav->popViewControllerAnimated(true));
        QVERIFY(popped.data() == second && !second->navigationController() && !second->parent());
        QCOMPARE(phone.log.mid(6), QStringList({"root:will", "root:did"}));
        QCOMPARE(bar->title(), QStringLiteral("hidden below"));
        QVERIFY(bar->rightButton()->isHidden());
        QCOMPARE(phone.nav->popViewControllerAnimated(false), nullptr);
        QPointer<ViewController> modal = new Probe(QStringLiteral("modal"), &phone.log);
        phone.nav->presentViewController(modal, true);
        QCOMPARE(phone.nav->presentedViewController(), modal.data());
        QCOMPARE(modal->presentingViewController(), phone.nav);
        QCOMPARE(phone.log.mid(8), QStringList({"modal:load", "modal:will", "modal:did"}));
        Screen::mainScreen().setPhoneSize(landscape);
        QCOMPARE(modal->view()->geometry(), phone.window.widget()->rect());
        QPointer<QWidget> modalView = modal->view();
        modal->dismissViewController(true);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QVERIFY(!modal && !modalView);
    }
    void navigationStackMayStartEmpty()
    {
        QStringList log;
        Window window;
        auto *nav = new NavigationController(nullptr);
        window.setRootViewController(nav);
        window.show();
        QVERIFY(nav->viewControllers().isEmpty() && !nav->topViewController());
        QCOMPARE(nav->navigationBar()->title(), QString());
        QCOMPARE(nav->popViewControllerAnimated(true), nullptr);
        auto *first = new Probe(QStringLiteral("first"), &log);
        nav->pushViewController(first, true);
        QCOMPARE(nav->topViewController(), first);
        QCOMPARE(log, QStringList({"first:load", "first:will", "first:did"}));
        QVERIFY(first->view()->isVisible());
        QCOMPARE(nav->navigationBar()->title(), QStringLiteral("first"));
        QCOMPARE(nav->popViewControllerAnimated(true), nullptr); // the first one is the root
    }
    void aControllerTakesItsViewWithIt_data()
    {
        QTest::addColumn<bool>("poppedFirst");
        QTest::newRow("deleted on a shown stack") << false;
        QTest::newRow("popped, then deleted by the caller") << true;
    }
    void aControllerTakesItsViewWithIt()
    {
        QFETCH(bool, poppedFirst);
        Phone phone;
        auto *second = new Probe(QStringLiteral("second"), &phone.log);
        phone.nav->pushViewController(second, false);
        QPointer<QWidget> view = second->view();
        if (poppedFirst)
            QCOMPARE(phone.nav->popViewControllerAnimated(false), second);
        delete second;
        QVERIFY(!view);
        QCOMPARE(phone.nav->viewControllers(), QList<ViewController *>{phone.root});
        QVERIFY(phone.root->view()->isVisible());
        QCOMPARE(phone.nav->navigationBar()->title(), QStringLiteral("root"));
    }
    void turningThePhoneIsReportedOncePerTurn_data()
    {
        QTest::addColumn<QList<QSize>>("sizes"); // the first one when the window is shown
        QTest::addColumn<Turns>("turns");
        const auto p = InterfaceOrientation::Portrait, l = InterfaceOrientation::Landscape;
        QTest::newRow("turned and back") << QList{portrait, landscape, portrait} << Turns{p, l};
        QTest::newRow("taller") << QList{portrait, QSize(375, 812)} << Turns();
        QTest::newRow("landscape from the start") << QList{landscape} << Turns();
    }
    void turningThePhoneIsReportedOncePerTurn()
    {
        QFETCH(QList<QSize>, sizes);
        Screen::mainScreen().setPhoneSize(sizes.takeFirst());
        Phone phone;
        for (const QSize &size : std::as_const(sizes))
            Screen::mainScreen().setPhoneSize(size);
        QTEST(phone.root->turns, "turns");
        Screen::mainScreen().setPhoneSize({});
        QCOMPARE(Screen::mainScreen().bounds().size(), QApplication::primaryScreen()->size());
    }
    void popupCardFollowsTheTopController_data()
    {
        QTest::addColumn<QSize>("phoneSize");
        QTest::addColumn<bool>("barHidden");
        QTest::addColumn<bool>("push");
        QTest::addColumn<QRect>("card");
        QTest::newRow("portrait") << portrait << false << false << QRect(15, 111, 345, 444);
        QTest::newRow("landscape") << landscape << false << false << QRect(15, 8, 637, 359);
        QTest::newRow("bar hidden") << portrait << true << false << QRect(15, 133, 345, 400);
        QTest::newRow("pushed") << portrait << false << true << QRect(37, 211, 300, 244);
    }
    void popupCardFollowsTheTopController()
    {
        QFETCH(QSize, phoneSize);
        QFETCH(bool, barHidden);
        QFETCH(bool, push);
        QFETCH(QRect, card);
        Phone phone;
        auto *popup = new PopupController(new Probe(QStringLiteral("a"), &phone.log));
        popup->presentInViewController(phone.root);
        QCOMPARE(phone.log.mid(3), QStringList({"a:load", "a:will", "a:did"}));
        popup->setNavigationBarHidden(barHidden, false);
        Screen::mainScreen().setPhoneSize(phoneSize);
        if (push) {
            auto *b = new Probe(QStringLiteral("b"), &phone.log);
            b->setContentSizeInPopup({300, 200});
            popup->pushViewController(b, false);
            QCOMPARE(phone.log.mid(6), QStringList({"b:load", "b:will", "b:did"}));
        }
        QCOMPARE(popup->backgroundView()->geometry(), phone.window.widget()->rect());
        QCOMPARE(popup->containerView()->geometry(), card);
        QCOMPARE(popup->navigationBar()->isVisible(), !barHidden);
        QCOMPARE(popup->viewControllers().first()->view()->isVisible(), !push);
        QWidget *top = popup->topViewController()->view();
        QVERIFY(top->isVisible());
        const QRect content = card.adjusted(0, barHidden ? 0 : 44, 0, 0);
        QCOMPARE(QRect(top->mapTo(phone.window.widget(), QPoint()), top->size()), content);
        popup->viewControllers().first()->setTitle(QStringLiteral("renamed"));
        QCOMPARE(popup->navigationBar()->title(), QString(push ? "b" : "renamed"));
        popup->dismiss();
    }
    void dismissingReleasesEverythingOnce_data()
    {
        QTest::addColumn<bool>("windowGoesFirst");
        QTest::newRow("dismissed while shown") << false;
        QTest::newRow("window deleted first") << true;
    }
    void dismissingReleasesEverythingOnce()
    {
        QFETCH(bool, windowGoesFirst);
        QScopedPointer<Phone> phone(new Phone);
        QPointer<ViewController> content = new Probe(QStringLiteral("a"), &phone->log);
        QPointer<PopupController> popup = new PopupController(content);
        popup->presentInViewController(phone->root);
        QPointer<QWidget> background = popup->backgroundView();
        QCOMPARE(background->palette().color(QPalette::Window).rgba(), qRgba(0, 0, 0, 128));
        QSignalSpy dismissed(popup.data(), &PopupController::dismissed);
        if (windowGoesFirst)
            phone.reset();
        popup->dismiss();
        popup->dismiss();
        QCOMPARE(dismissed.count(), windowGoesFirst ? 0 : 1);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QVERIFY(!popup && !content && !background);
    }
    void popupBarTakesTheAppearance_data()
    {
        QTest::addColumn<PopupNavigationBar::BarStyle>("style");
        QTest::addColumn<QColor>("tint");
        QTest::addColumn<QColor>("bar");
        QTest::addColumn<QColor>("titleColor");
        using Style = PopupNavigationBar::BarStyle;
        const QColor white(Qt::white), black(Qt::black);
        QTest::newRow("default") << Style::Default << QColor() << white << black;
        QTest::newRow("black") << Style::Black << QColor() << black << white;
        QTest::newRow("tinted") << Style::Default << QColor(Qt::red) << white << black;
    }
    void popupBarTakesTheAppearance()
    {
        QFETCH(PopupNavigationBar::BarStyle, style);
        QFETCH(QColor, tint);
        PopupNavigationBar::appearance().barStyle = style;
        PopupNavigationBar::appearance().tintColor = tint;
        PopupNavigationBar bar;
        QTEST(bar.grab().toImage().pixelColor(100, 10), "bar");
        const QLabel *title = bar.findChild<QLabel *>();
        QTEST(title->palette().color(QPalette::WindowText), "titleColor");
        QVERIFY(title->font().bold() && title->font().pixelSize() == 17);
        const QColor button = tint.isValid() ? tint : QColor::fromRgbF(0, 0.48f, 1);
        QCOMPARE(bar.rightButton()->palette().color(QPalette::ButtonText), button);
    }
};

QTEST_MAIN(TestContainers)

#include "tst_containers.moc"
