#include "phonewindow.h"

#include <Brevanti/platform/PopupController.h>
#include <Brevanti/platform/TabBarController.h>

#include <QSignalSpy>
#include <QTabBar>
#include <QTest>

using namespace bvt;
using Turns = QList<InterfaceOrientation>;

namespace {

const QSize portrait = PhoneWindow::portrait;
const QSize landscape = portrait.transposed();
QString hooks; // "name:hook ...", in the order the containers called them

// A controller that logs its hooks and turns, with a card size of its own.
struct Probe : ViewController
{
    explicit Probe(const QString &name, const QSize &card = {345, 400}) : name(name)
    {
        setTitle(name);
        setContentSizeInPopup(card);
        setLandscapeContentSizeInPopup({637, 315});
    }
    void viewDidLoad() override { hooks += name + ":load "; }
    void viewWillAppear(bool) override { hooks += name + ":will "; }
    void viewDidAppear(bool) override { hooks += name + ":did "; }
    void didRotateFromInterfaceOrientation(InterfaceOrientation from) override { turns << from; }
    QString name;
    Turns turns;
};

} // namespace

class TestContainers : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void navigationOrdersViewsAndHooks_data();
    void navigationOrdersViewsAndHooks();
    void aControllerTakesItsViewWithIt();
    void tabsShowTheSelectedController();
    void popupCardShowsOnlyTheTopController_data();
    void popupCardShowsOnlyTheTopController();

private:
    Probe *m_root = nullptr; // the first on a navigation stack, the root of the window
    std::unique_ptr<PhoneWindow> m_phone;
};

void TestContainers::init()
{
    m_phone.reset();
    hooks.clear();
    m_root = new Probe(QStringLiteral("root"));
    m_phone = std::make_unique<PhoneWindow>(new NavigationController(m_root));
}

void TestContainers::navigationOrdersViewsAndHooks_data()
{
    QTest::addColumn<bool>("startsEmpty"); // the root is pushed once the window is shown
    QTest::addColumn<QSize>("screen");
    QTest::addColumn<QRect>("page"); // below the bar
    QTest::newRow("with a root") << false << portrait << QRect(0, 44, 375, 623);
    QTest::newRow("empty at first, landscape") << true << landscape << QRect(0, 44, 667, 331);
}

void TestContainers::navigationOrdersViewsAndHooks()
{
    QFETCH(bool, startsEmpty);
    QFETCH(QSize, screen);
    QFETCH(QRect, page);
    if (startsEmpty) {
        m_phone = std::make_unique<PhoneWindow>(new NavigationController(nullptr), screen);
        QVERIFY(m_phone->navigation()->viewControllers().isEmpty());
        QCOMPARE(m_phone->navigation()->popViewControllerAnimated(true), nullptr);
        hooks.clear();
        m_phone->navigation()->pushViewController(m_root = new Probe("root"), true);
    }
    NavigationController *nav = m_phone->navigation();
    QCOMPARE(hooks, "root:load root:will root:did ");
    QCOMPARE(m_phone->frameOf(m_root->view()), page);
    auto *second = new Probe(QStringLiteral("second"));
    hooks.clear();
    nav->pushViewController(second, true);
    QCOMPARE(hooks, "second:load second:will second:did ");
    QVERIFY(second->view()->isVisible() && !m_root->view()->isVisible());
    QVERIFY(second->navigationController() == nav && nav->navigationBar()->title() == "second");
    hooks.clear();
    QScopedPointer<ViewController> popped(nav->popViewControllerAnimated(true));
    QVERIFY(popped.data() == second && !second->navigationController() && !second->parent());
    QCOMPARE(hooks, "root:will root:did ");
    // Turned, then resized without a turn: one turn reported, from the first orientation.
    Screen::mainScreen().setPhoneSize(screen.transposed());
    Screen::mainScreen().setPhoneSize(screen.transposed() + QSize(100, 100));
    QCOMPARE(m_root->turns, Turns{Screen::orientationOf(screen)});
}

void TestContainers::aControllerTakesItsViewWithIt()
{
    NavigationController *nav = m_phone->navigation();
    for (const bool poppedFirst : {false, true}) { // deleted on the shown stack, or by the caller
        auto *second = new Probe(QStringLiteral("second"));
        nav->pushViewController(second, false);
        QPointer<QWidget> view = second->view();
        if (poppedFirst)
            QCOMPARE(nav->popViewControllerAnimated(false), second);
        delete second;
        QVERIFY(!view);
        QCOMPARE(nav->viewControllers(), QList<ViewController *>{m_root});
        QVERIFY(m_root->view()->isVisible() && nav->navigationBar()->title() == "root");
    }
}

void TestContainers::tabsShowTheSelectedController()
{
    auto *tabs = new TabBarController;
    tabs->setViewControllers({new Probe("first"), new Probe("second"), new Probe("third")});
    tabs->setSelectedIndex(1); // before the view exists
    hooks.clear();
    m_phone = std::make_unique<PhoneWindow>(tabs);
    const auto shown = [tabs] {
        QString visible;
        for (ViewController *controller : tabs->viewControllers())
            visible += controller->view()->isVisible() ? 'x' : '-';
        return visible;
    };
    QCOMPARE(shown(), "-x-");
    QCOMPARE(hooks, "first:load second:load third:load second:will second:did ");
    auto *bar = tabs->view()->findChild<QTabBar *>();
    QCOMPARE(bar->tabText(2), "third");
    tabs->setSelectedIndex(2);
    QVERIFY(shown() == "--x" && bar->currentIndex() == 2);
    tabs->setSelectedIndex(3); // no such tab
    QCOMPARE(tabs->selectedIndex(), 2);
    bar->setCurrentIndex(0); // as a tap on the tab does
    QVERIFY(shown() == "x--" && tabs->selectedIndex() == 0);
}

void TestContainers::popupCardShowsOnlyTheTopController_data()
{
    QTest::addColumn<QSize>("phoneSize");
    QTest::addColumn<bool>("barHidden");
    QTest::addColumn<int>("push"); // b on a: 0 never, 1 once shown, 2 before it is presented
    QTest::addColumn<QRect>("card");
    QTest::addColumn<int>("end"); // 0 dismissed, 1 the window deleted first, 2 the popup deleted
    QTest::newRow("portrait") << portrait << false << 0 << QRect(15, 111, 345, 444) << 0;
    QTest::newRow("landscape") << landscape << false << 0 << QRect(15, 8, 637, 359) << 1;
    QTest::newRow("bar hidden") << portrait << true << 0 << QRect(15, 133, 345, 400) << 2;
    QTest::newRow("pushed") << portrait << false << 1 << QRect(37, 211, 300, 244) << 0;
    QTest::newRow("pushed before") << portrait << false << 2 << QRect(37, 211, 300, 244) << 0;
}

void TestContainers::popupCardShowsOnlyTheTopController()
{
    QFETCH(QSize, phoneSize);
    QFETCH(bool, barHidden);
    QFETCH(int, push);
    QFETCH(QRect, card);
    QFETCH(int, end);
    QPointer<Probe> a = new Probe(QStringLiteral("a"));
    auto *b = new Probe(QStringLiteral("b"), {300, 200});
    QPointer<PopupController> popup = new PopupController(a);
    if (push == 2)
        popup->pushViewController(b, false);
    hooks.clear();
    popup->presentInViewController(m_root);
    popup->setNavigationBarHidden(barHidden, false);
    Screen::mainScreen().setPhoneSize(phoneSize);
    if (push == 1)
        popup->pushViewController(b, false);
    QCOMPARE(hooks,
             QString(push == 2 ? "" : "a:load a:will a:did ")
                     + (push ? "b:load b:will b:did " : ""));
    QPointer<QWidget> background = popup->backgroundView(), container = popup->containerView();
    QCOMPARE(background->geometry(), m_phone->widget()->rect());
    QCOMPARE(container->geometry(), card);
    QCOMPARE(popup->navigationBar()->isVisible(), !barHidden);
    QWidget *top = popup->topViewController()->view();
    QVERIFY(top->isVisible());
    QCOMPARE(m_phone->frameOf(top), card.adjusted(0, barHidden ? 0 : 44, 0, 0));
    QCOMPARE(a->view()->isVisible(), !push);
    a->setTitle(QStringLiteral("renamed"));
    QCOMPARE(popup->navigationBar()->title(), push ? "b" : "renamed");
    QCOMPARE(popup->popViewControllerAnimated(false), push ? b : nullptr); // never the root
    delete b;
    QVERIFY(a->view()->isVisible() && popup->navigationBar()->title() == "renamed");

    // However it ends, everything goes, and the end is reported once if it was seen.
    QSignalSpy dismissed(popup.data(), &PopupController::dismissed);
    if (end == 1)
        m_phone.reset();
    if (end == 2) {
        delete popup;
    } else {
        popup->dismiss();
        popup->dismiss();
    }
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QCOMPARE(dismissed.count(), end == 0 ? 1 : 0);
    QVERIFY(!popup && !a && !background && !container);
}

QTEST_MAIN(TestContainers)

#include "tst_containers.moc"
