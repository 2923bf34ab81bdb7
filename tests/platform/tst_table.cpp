#include "phonewindow.h"

#include <Brevanti/platform/TableView.h>

#include <QLabel>
#include <QPointer>
#include <QTest>

using bvt::IndexPath;
using bvt::TableView;
using bvt::TableViewCell;

namespace {

// 100 sections of 20 rows; the footer is the smallest positive double, which must take no pixel.
struct Model : bvt::TableViewDataSource, bvt::TableViewDelegate
{
    int cellRequests = 0;
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
        ++cellRequests;
        TableViewCell *cell = table->dequeueReusableCellWithIdentifier(QStringLiteral("row"));
        if (!cell) {
            cell = new TableViewCell(TableViewCell::Style::Default, QStringLiteral("row"));
            new QLabel(QStringLiteral("%1.%2").arg(p.section).arg(p.row), cell->contentView());
        }
        return cell;
    }
};

} // namespace

class TestTable : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void scrollingShowsWhatIsInView_data();
    void scrollingShowsWhatIsInView();
    void selectionByTapAndReload_data();
    void selectionByTapAndReload();

private:
    std::unique_ptr<Model> m_model;
    std::unique_ptr<PhoneWindow> m_phone; // deleted first: its table points to the model
    TableView *m_table = nullptr;         // filling the window
};

void TestTable::init()
{
    m_phone.reset();
    m_model = std::make_unique<Model>();
    m_phone = std::make_unique<PhoneWindow>(new bvt::ViewController);
    m_table = new TableView(TableView::Style::Grouped, m_phone->root()->view());
    m_table->setGeometry(m_phone->widget()->rect());
    m_table->setDelegate(m_model.get());
    m_table->setDataSource(m_model.get());
    m_table->show();
}

void TestTable::scrollingShowsWhatIsInView_data()
{
    QTest::addColumn<int>("offset");
    QTest::addColumn<int>("step"); // scrolled there from the top in steps of this many pixels
    QTest::newRow("across a section boundary, 7 px at a time") << 1000 << 7;
    QTest::newRow("beyond the end, half a screen at a time") << 200000 << 330;
}

void TestTable::scrollingShowsWhatIsInView()
{
    QFETCH(int, offset);
    QFETCH(int, step);
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
    int shown = 0;
    for (TableViewCell *cell : m_table->viewport()->findChildren<TableViewCell *>())
        shown += cell->isVisible();
    QCOMPARE(shown, rows.size());
    QVERIFY(m_table->cellsCreated() <= 11 + TableView::poolLimit); // the cells that left came back
    for (const IndexPath &p : rows) {
        QCOMPARE(m_table->cellForRowAtIndexPath(p)->geometry(),
                 QRect(0, Model::top(p) - top, view.width(), 60));
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

void TestTable::selectionByTapAndReload_data()
{
    QTest::addColumn<QPoint>("move"); // between the press on row 0.2's label and the release
    QTest::addColumn<bool>("selects");
    QTest::newRow("released where pressed") << QPoint(0, 0) << true;
    QTest::newRow("released on the next row") << QPoint(0, 60) << false;
    QTest::newRow("released above the table") << QPoint(0, -200) << false;
}

void TestTable::selectionByTapAndReload()
{
    QFETCH(QPoint, move);
    QFETCH(bool, selects);
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

    // A reload asks for every row and header again, and forgets the selection; the cells in view
    // come back from the pool, the selected one too.
    const QList<TableViewCell *> cells = m_table->viewport()->findChildren<TableViewCell *>();
    const QList<QPointer<TableViewCell>> before(cells.cbegin(), cells.cend());
    m_table->selectRowAtIndexPath({0, 1});
    m_table->reloadData();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(m_model->cellRequests == 22 && m_model->headers.value(0) == 2);
    QVERIFY(m_table->cellsCreated() == 11 && !before.contains(nullptr));
    QVERIFY(m_table->indexPathsForSelectedRows().isEmpty());
    for (const IndexPath &p : m_table->indexPathsForVisibleRows())
        QVERIFY(!m_table->cellForRowAtIndexPath(p)->isSelected());
}

QTEST_MAIN(TestTable)

#include "tst_table.moc"
