#include "phonewindow.h"

#include <Brevanti/platform/PopupController.h>
#include <Brevanti/platform/TabBarController.h>
#include <Brevanti/platform/TableView.h>

#include <QtTest>
#include <QtWidgets>

using namespace bvt;
using Turns = QList<InterfaceOrientation>;

namespace {

const QSize portrait = PhoneWindow::portrait;
const QSize landscape = portrait.transposed();
QString hooks; // "name:hook ...", in the order the containers called them

// 100 sections of 20 rows; the footer is the smallest positive double, which must take no pixel.
struct Model : bvt::TableViewDataSource, bvt::TableViewDelegate
{
    QMap<int, int> headers; // how often each section's header was asked for
    QList<IndexPath> selections;
    static int top(const IndexPath &p) { return p.section * (50 + 20 * 60) + 50 + p.row * 60; }
    int numberOfSectionsInTableView(TableView *) override { return 100; }
    int numberOfRowsInSection(TableView *, int) override { return 20; }
    double heightForHeaderInSection(TableView *, int) override { return 50; }
    double heightForRowAtIndexPath(TableView *, const IndexPath &) override { return 60; }
    double heightForFooterInSection(TableView *, int) override { return 2.2250738585072014e-308; }
    void didSelectRowAtIndexPath(TableView *, const IndexPath &p) override { selections << p; }
    QWidget *viewForHeaderInSection(TableView *, int s) override
    {
        ++headers[s];
        return new QWidget;
    }

    // A cell is built only when the pool has none to hand back.
    TableViewCell *cellForRowAtIndexPath(TableView *table, const IndexPath &p) override
    {
        TableViewCell *cell = table->dequeueReusableCellWithIdentifier(QStringLiteral("row"));
        if (!cell) {
            cell = new TableViewCell(TableViewCell::Style::Default, QStringLiteral("row"));
            new QLabel(QStringLiteral("%1.%2").arg(p.section).arg(p.row), cell->contentView());
        }
        return cell;
    }
};

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

class TestPlatform : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        m_phone.reset();
        hooks.clear();
        m_model = std::make_unique<Model>();
        m_root = new Probe(QStringLiteral("root"));
        m_phone = std::make_unique<PhoneWindow>(new NavigationController(m_root));
    }

    void scrollingShowsWhatIsInView_data()
    {
        QTest::addColumn<int>("offset");
        QTest::addColumn<int>("step"); // scrolled there from the top in steps of this many pixels
        QTest::newRow("across a section boundary, 7 px at a time") << 1000 << 7;
        QTest::newRow("beyond the end, half a screen at a time") << 200000 << 330;
    }

    void scrollingShowsWhatIsInView()
    {
        QFETCH(int, offset);
        QFETCH(int, step);
        showTable();
        for (int y = 0; y < offset + step; y += step)
            m_table->setContentOffset(qMin(y, offset));
        const int top = int(m_table->contentOffset());
        const QRect view = m_table->viewport()->rect().translated(0, top); // in the content
        QCOMPARE(top, qMin(offset, 125000 - view.height()));
        QList<IndexPath> rows;
        for (int i = 0; i < 2000; ++i) {
            if (view.intersects(QRect(0, Model::top({i / 20, i % 20}), view.width(), 60)))
                rows << IndexPath{i / 20, i % 20};
        }
        QCOMPARE(m_table->indexPathsForVisibleRows(), rows);
        QCOMPARE(m_table->rectForRowAtIndexPath({0, 20}), QRectF()); // past the section's end
        int shown = 0;
        for (TableViewCell *cell : m_table->viewport()->findChildren<TableViewCell *>())
            shown += cell->isVisible();
        QCOMPARE(shown, rows.size());
        QVERIFY(m_table->cellsCreated()
                <= 11 + TableView::poolLimit); // the cells that left came back
        // A separator lies on each row's last line, but for a section's last row.
        const QImage image = m_table->viewport()->grab().toImage();
        for (const IndexPath &p : rows) {
            const QRect row(0, Model::top(p) - top, view.width(), 60);
            QCOMPARE(m_table->cellForRowAtIndexPath(p)->geometry(), row);
            if (row.bottom() < view.height())
                QCOMPARE(image.pixel(100, row.bottom()) == qRgb(255, 255, 255), p.row == 19);
        }
        // Headers in view are placed; one that left is asked for again on return.
        for (int s = 0; s < 100; ++s) {
            const QRect header(0, s * 1250, view.width(), 50);
            QCOMPARE(m_table->rectForHeaderInSection(s), QRectF(header));
            QWidget *widget = m_table->headerViewForSection(s);
            QCOMPARE(widget ? widget->geometry() : QRect(),
                     view.intersects(header) ? header.translated(0, -top) : QRect());
        }
        m_table->setContentOffset(0);
        QCOMPARE(m_model->headers.value(0), 2);
    }

    void selectionByTapAndReload_data()
    {
        QTest::addColumn<QPoint>("move"); // between the press on row 0.2's label and the release
        QTest::addColumn<bool>("selects");
        QTest::newRow("released where pressed") << QPoint(0, 0) << true;
        QTest::newRow("released on the next row") << QPoint(0, 60) << false;
    }

    void selectionByTapAndReload()
    {
        QFETCH(QPoint, move);
        QFETCH(bool, selects);
        showTable();
        TableViewCell *cell = m_table->cellForRowAtIndexPath({0, 2});
        // Through the window: the press and the release take Qt's real routing to the cell.
        QWindow *window = m_phone->widget()->windowHandle();
        const QPoint press = cell->findChild<QLabel *>()->mapTo(m_phone->widget(), QPoint(2, 2));
        QTest::mousePress(window, Qt::LeftButton, {}, press);
        QTest::mouseRelease(window, Qt::LeftButton, {}, press + move);
        const auto selected = selects ? QList{IndexPath{0, 2}} : QList<IndexPath>();
        QCOMPARE(m_model->selections, selected);
        QCOMPARE(m_table->indexPathsForSelectedRows(), selected);
        QCOMPARE(cell->isSelected(), selects);
        // A reload forgets the selection.
        m_table->selectRowAtIndexPath({0, 1});
        m_table->reloadData();
        m_table->selectRowAtIndexPath({0, 20}); // no such row
        QVERIFY(m_table->indexPathsForSelectedRows().isEmpty());
        for (const IndexPath &p : m_table->indexPathsForVisibleRows())
            QVERIFY(!m_table->cellForRowAtIndexPath(p)->isSelected());
    }

    void navigationOrdersViewsAndHooks_data()
    {
        QTest::addColumn<bool>("startsEmpty"); // the root is pushed once the window is shown
        QTest::addColumn<QSize>("screen");
        QTest::addColumn<QRect>("page"); // below the bar
        QTest::newRow("with a root") << false << portrait << QRect(0, 44, 375, 623);
        QTest::newRow("empty at first, landscape") << true << landscape << QRect(0, 44, 667, 331);
    }

    void navigationOrdersViewsAndHooks()
    {
        QFETCH(bool, startsEmpty);
        QFETCH(QSize, screen);
        if (startsEmpty) {
            m_phone = std::make_unique<PhoneWindow>(new NavigationController(nullptr), screen);
            QVERIFY(m_phone->navigation()->viewControllers().isEmpty());
            QCOMPARE(m_phone->navigation()->popViewControllerAnimated(true), nullptr);
            hooks.clear();
            m_phone->navigation()->pushViewController(m_root = new Probe("root"), true);
        }
        NavigationController *nav = m_phone->navigation();
        QCOMPARE(hooks, "root:load root:will root:did ");
        QTEST(m_phone->frameOf(m_root->view()), "page");
        auto *second = new Probe(QStringLiteral("second"));
        QCOMPARE(Probe("loose").view()->size(),
                 screen); // the screen's, until a container places it
        hooks.clear();
        nav->pushViewController(second, true);
        QCOMPARE(hooks, "second:load second:will second:did ");
        QVERIFY(second->view()->isVisible() && !m_root->view()->isVisible());
        QVERIFY(second->view()->autoFillBackground()); // white, not the window's grey
        const QLabel *title = nav->navigationBar()->findChild<QLabel *>(); // centred, bar-high
        QVERIFY(title->font().pixelSize() == 17 && title->height() == 44
                && title->x() * 2 + title->width() == nav->navigationBar()->width());
        QVERIFY(second->navigationController() == nav && nav->navigationBar()->title() == "second");
        hooks.clear();
        QPointer<QWidget> view = second->view(); // a controller takes its view with it
        QVERIFY(nav->popViewControllerAnimated(true) == second && !second->navigationController()
                && !second->parent() && nav->navigationBar()->title() == "root");
        QCOMPARE(hooks, "root:will root:did ");
        delete second;
        QVERIFY(!view);
        // Presented over everything, following the window, gone once dismissed.
        QPointer<ViewController> modal = new Probe(QStringLiteral("modal"));
        nav->presentViewController(modal, true);
        QVERIFY(nav->presentedViewController() == modal
                && modal->presentingViewController() == nav);
        // Turned, then resized without a turn: one turn reported, from the first orientation.
        Screen::mainScreen().setPhoneSize(screen.transposed());
        Screen::mainScreen().setPhoneSize(screen.transposed() + QSize(100, 100));
        QCOMPARE(m_root->turns, Turns{Screen::orientationOf(screen)});
        QVERIFY(modal->view()->isVisible()
                && modal->view()->geometry() == m_phone->widget()->rect());
        QPointer<QWidget> modalView = modal->view();
        modal->dismissViewController(true);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QVERIFY(!modal && !modalView);
        // Deleted on the shown stack, it leaves the stack too.
        nav->pushViewController(second = new Probe(QStringLiteral("second")), false);
        view = second->view();
        delete second;
        QVERIFY(!view && nav->viewControllers() == QList<ViewController *>{m_root});
        QVERIFY(m_root->view()->isVisible() && nav->navigationBar()->title() == "root"
                && !nav->navigationBar()->backButton()->isVisible());
    }

    void backNavigation_data()
    {
        QTest::addColumn<int>("key"); // 0: the bar's back button
        QTest::addColumn<QString>("rootTitle");
        QTest::newRow("back button") << 0 << "root";
        QTest::newRow("Escape, untitled root") << int(Qt::Key_Escape) << QString();
        QTest::newRow("back key") << int(Qt::Key_Back) << "root";
    }

    // Back leads to the controller below and lets the popped one go; a stack of one has no back.
    void backNavigation()
    {
        QFETCH(int, key);
        QFETCH(QString, rootTitle);
        m_root->setTitle(rootTitle);
        NavigationController *nav = m_phone->navigation();
        QToolButton *back = nav->navigationBar()->backButton();
        QVERIFY(!back->isVisible());
        QPointer<Probe> second = new Probe(QStringLiteral("second"));
        nav->pushViewController(second, true);
        QVERIFY(back->isVisible());
        QCOMPARE(back->text(), "\u2039 " + (rootTitle.isNull() ? "Back" : rootTitle));
        QVERIFY(back->x() > 0 && back->height() == 44);
        for (int press = 0; press < 2; ++press) // the second finds a stack of one
            key ? QTest::keyClick(nav->view(), Qt::Key(key)) : back->click();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QVERIFY(!second && nav->viewControllers() == QList<ViewController *>{m_root});
        QVERIFY(!back->isVisible() && m_root->view()->isVisible());
    }

    void tabsShowTheSelectedController()
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
        tabs->setSelectedIndex(3); // no such tab
        QVERIFY(shown() == "--x" && bar->currentIndex() == 2 && tabs->selectedIndex() == 2);
        bar->setCurrentIndex(0); // as a tap on the tab does
        QVERIFY(shown() == "x--" && tabs->selectedIndex() == 0);
    }

    void popupCardShowsOnlyTheTopController_data()
    {
        QTest::addColumn<QSize>("phoneSize");
        QTest::addColumn<bool>("barHidden");
        QTest::addColumn<int>("push"); // b on a: 0 never, 1 once shown, 2 before it is presented
        QTest::addColumn<QRect>("card");
        QTest::addColumn<int>(
                "end"); // 0 dismissed, 1 the window deleted first, 2 the popup deleted
        QTest::newRow("portrait") << portrait << false << 0 << QRect(15, 111, 345, 444) << 0;
        QTest::newRow("landscape") << landscape << false << 0 << QRect(15, 8, 637, 359) << 1;
        QTest::newRow("bar hidden") << portrait << true << 0 << QRect(15, 133, 345, 400) << 2;
        QTest::newRow("pushed") << portrait << false << 1 << QRect(37, 211, 300, 244) << 0;
        QTest::newRow("pushed before") << portrait << false << 2 << QRect(37, 211, 300, 244) << 0;
    }

    void popupCardShowsOnlyTheTopController()
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
        QVERIFY(background->geometry() == m_phone->widget()->rect()
                && background->parentWidget() == m_phone->widget()
                && background->autoFillBackground()); // it dims what is behind
        QCOMPARE(container->geometry(), card);
        QVERIFY(container->mask().contains(QPoint(20, 20)) && !container->mask().contains({0, 0}));
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

private:
    // in place of the navigation stack
    void showTable()
    {
        m_phone = std::make_unique<PhoneWindow>(new ViewController);
        m_table = new TableView(TableView::Style::Grouped, m_phone->root()->view());
        m_table->setGeometry(m_phone->widget()->rect());
        m_table->setDelegate(m_model.get());
        m_table->setDataSource(m_model.get());
        m_table->show();
    }

    std::unique_ptr<Model> m_model;
    Probe *m_root = nullptr;              // the first on a navigation stack, the root of the window
    std::unique_ptr<PhoneWindow> m_phone; // deleted first: its table points to the model
    TableView *m_table = nullptr;         // filling the window, once shown
};

QTEST_MAIN(TestPlatform)

#include "tst_platform.moc"
