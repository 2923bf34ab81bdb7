#include <Brevanti/platform/Switch.h>
#include <Brevanti/platform/TableView.h>
#include <Brevanti/platform/ViewTag.h>

#include <QApplication>
#include <QLabel>
#include <QPointer>
#include <QScrollBar>
#include <QTest>

using bvt::IndexPath;
using bvt::TableView;
using bvt::TableViewCell;

namespace {

// 100 sections of 20 rows; the footer is the smallest positive double, which must take no pixel.
struct Model : bvt::TableViewDataSource, bvt::TableViewDelegate
{
    int cellRequests = 0;
    QMap<int, int> headers;
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
    // Never refilled: a reused cell must come back exactly as it left.
    TableViewCell *cellForRowAtIndexPath(TableView *table, const IndexPath &p) override
    {
        ++cellRequests;
        TableViewCell *cell = table->dequeueReusableCellWithIdentifier(QStringLiteral("row"));
        if (!cell) {
            cell = new TableViewCell(TableViewCell::Style::Default, QStringLiteral("row"));
            new QLabel(QStringLiteral("%1.%2").arg(p.section).arg(p.row), cell->contentView());
            cell->setAccessoryView(new bvt::Switch);
        }
        return cell;
    }
};

} // namespace

class TestTable : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        // The old table goes before the model it points to.
        m_table = std::make_unique<TableView>(TableView::Style::Grouped);
        m_model = std::make_unique<Model>();
        m_table->resize(375, 667);
        m_table->setDelegate(m_model.get());
        m_table->setDataSource(m_model.get());
        m_table->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_table.get()));
    }
    void onlyVisibleRowsHaveCells_data()
    {
        QTest::addColumn<int>("offset");
        QTest::newRow("top") << 0;
        QTest::newRow("across a section boundary") << 1000;
        QTest::newRow("beyond the end") << 200000;
    }
    void onlyVisibleRowsHaveCells()
    {
        QFETCH(int, offset);
        m_table->setContentOffset(offset);
        const int viewTop = int(m_table->contentOffset());
        const QSize view = m_table->viewport()->size();
        QCOMPARE(m_table->contentHeight(), 125000.0);
        QCOMPARE(viewTop, qMin(offset, 125000 - view.height()));
        QList<IndexPath> expected;
        for (int i = 0; i < 2000; ++i) {
            const IndexPath p{i / 20, i % 20};
            if (Model::top(p) < viewTop + view.height() && Model::top(p) + 60 > viewTop)
                expected << p;
        }
        QCOMPARE(m_table->indexPathsForVisibleRows(), expected);
        int shown = 0;
        for (TableViewCell *cell : m_table->viewport()->findChildren<TableViewCell *>())
            shown += cell->isVisible();
        QCOMPARE(shown, expected.size());
        for (const IndexPath &p : expected)
            QCOMPARE(m_table->cellForRowAtIndexPath(p)->geometry(),
                     QRect(0, Model::top(p) - viewTop, view.width(), 60));
    }
    void scrollingReusesCells_data()
    {
        QTest::addColumn<int>("step");
        QTest::newRow("7 px") << 7;
        QTest::newRow("one row") << 60;
        QTest::newRow("half a screen") << 330;
    }
    void scrollingReusesCells()
    {
        QFETCH(int, step);
        QCOMPARE(m_table->cellsCreated(), 11);
        const int bottom = m_table->verticalScrollBar()->maximum();
        for (int y = 0; y < bottom + step; y += step)
            m_table->setContentOffset(qMin(y, bottom));
        QCOMPARE(m_table->indexPathsForVisibleRows().last(), (IndexPath{99, 19}));
        QVERIFY(m_table->cellsCreated() <= 11 + TableView::poolLimit);
    }
    void reusedCellComesBackUnrefilled()
    {
        TableViewCell *first = m_table->cellForRowAtIndexPath({0, 0});
        m_table->setContentOffset(120); // row 0.0 leaves, rows 0.11 and 0.12 enter
        QCOMPARE(m_table->cellForRowAtIndexPath({0, 11}), first);
        QCOMPARE(first->findChild<QLabel *>()->text(), QStringLiteral("0.0"));
    }
    void headers()
    {
        const double top = 50 + 20 * 60;
        const int width = m_table->viewport()->width();
        QCOMPARE(m_table->rectForHeaderInSection(1), QRectF(0, top, width, 50));
        QPointer<QWidget> header0 = m_table->headerViewForSection(0);
        QVERIFY(header0);
        m_table->setContentOffset(1200);
        QCOMPARE(m_table->headerViewForSection(1)->geometry(), QRect(0, 50, width, 50));
        m_table->setContentOffset(5000);
        QCOMPARE(m_table->headerViewForSection(0), nullptr);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QVERIFY(!header0); // the table deleted what it owned
        m_table->setContentOffset(0);
        QCOMPARE(m_model->headers, (QMap<int, int>{{0, 2}, {1, 1}, {4, 1}}));
    }
    void reloadAsksAgainAndReusesPooledCells()
    {
        const QList<TableViewCell *> cells = m_table->viewport()->findChildren<TableViewCell *>();
        const QList<QPointer<TableViewCell>> before(cells.cbegin(), cells.cend());
        m_table->selectRowAtIndexPath({0, 1}); // its cell is pooled, then reused
        m_table->reloadData();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QCOMPARE(m_model->cellRequests, 22);
        QCOMPARE(m_model->headers.value(0), 2);
        QCOMPARE(m_table->cellsCreated(), 11); // every visible cell came back
        QCOMPARE(before.count(nullptr), 0);
        QVERIFY(m_table->indexPathsForSelectedRows().isEmpty());
        for (const IndexPath &p : m_table->indexPathsForVisibleRows())
            QVERIFY(!m_table->cellForRowAtIndexPath(p)->isSelected());
    }
    void tapSelects()
    {
        TableViewCell *cell = m_table->cellForRowAtIndexPath({0, 2});
        // On the label, through the window: the click takes Qt's real routing up to the cell.
        QTest::mouseClick(m_table->windowHandle(), Qt::LeftButton, {},
                          cell->findChild<QLabel *>()->mapTo(m_table.get(), QPoint(2, 2)));
        QCOMPARE(m_model->selections, QList<IndexPath>{(IndexPath{0, 2})});
        QCOMPARE(m_table->indexPathsForSelectedRows(), QList<IndexPath>{(IndexPath{0, 2})});
        QVERIFY(cell->isSelected());
        m_table->deselectRowAtIndexPath({0, 2}, true);
        QVERIFY(!cell->isSelected() && m_table->indexPathsForSelectedRows().isEmpty());
    }
    void separators()
    {
        m_table->setContentOffset(1000); // the end of section 0 and the start of section 1
        const QImage image = m_table->viewport()->grab().toImage();
        const auto under = [&](const IndexPath &p, int x) {
            return image.pixel(x, m_table->cellForRowAtIndexPath(p)->geometry().bottom());
        };
        const QRgb separator = QColor::fromRgbF(0.78, 0.78, 0.8).rgb();
        QCOMPARE(under({0, 18}, 100), separator);
        QCOMPARE(under({0, 18}, 5), qRgb(255, 255, 255));   // within the inset
        QCOMPARE(under({0, 19}, 100), qRgb(255, 255, 255)); // a section's last row
    }
    void switchReportsOnlyUserFlips_data()
    {
        QTest::addColumn<bool>("from");
        QTest::addColumn<bool>("click");
        QTest::newRow("click off") << false << true;
        QTest::newRow("click on") << true << true;
        QTest::newRow("setOn") << false << false;
        QTest::newRow("setOn off") << true << false;
    }
    void switchReportsOnlyUserFlips()
    {
        QFETCH(bool, from);
        QFETCH(bool, click);
        auto *control = qobject_cast<bvt::Switch *>(
                m_table->cellForRowAtIndexPath({0, 1})->accessoryView());
        control->setOn(from, false);
        QList<bool> seen;
        connect(control, &bvt::Switch::valueChanged, [&] { seen << control->isOn(); });
        click ? QTest::mouseClick(control, Qt::LeftButton) : control->setOn(!from, true);
        QCOMPARE(control->isChecked(), !from);
        QCOMPARE(seen, QList<bool>(click, !from)); // emitted once the state had changed
        QVERIFY(m_model->selections.isEmpty());    // the switch took the click, not the cell
    }
    void viewWithTag()
    {
        QLabel *label = m_table->cellForRowAtIndexPath({0, 5})->findChild<QLabel *>();
        bvt::setViewTag(label, 7);
        bvt::setViewTag(m_table.get(), 1);
        QCOMPARE(bvt::viewWithTag(m_table.get(), 7), label);
        QCOMPARE(bvt::viewWithTag(m_table.get(), 1), m_table.get());
        QCOMPARE(bvt::viewWithTag(m_table.get(), 9), nullptr);
    }

private:
    std::unique_ptr<Model> m_model;
    std::unique_ptr<TableView> m_table;
};

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    TestTable test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_table.moc"
