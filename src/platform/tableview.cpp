#include <Brevanti/platform/TableView.h>

#include "core/logging.h"
#include "platform/hairline.h"

#include <QPaintEvent>
#include <QPainter>
#include <QScrollBar>
#include <QtMath>

#include <algorithm>

namespace bvt {

namespace {

constexpr int scrollStep = 20;

QColor groupedBackground()
{
    return QColor::fromRgbF(0.94, 0.94, 0.96);
}

QColor defaultSeparatorColor()
{
    return QColor::fromRgbF(0.78, 0.78, 0.8);
}

bool intersects(double top, double height, double viewTop, double viewBottom)
{
    return height > 0 && top < viewBottom && top + height > viewTop;
}

// A section's place in the content, from the delegate's heights.
struct Section
{
    double top = 0, header = 0, footer = 0;
    QList<double> rowTops, rowHeights;
};

} // namespace

class TableView::Private
{
public:
    Private(Style style, TableView *table) : table(table), style(style) { }

    void layoutVisible(bool trimPool = true);
    void recomputeGeometry();
    void placeSeparator(TableViewCell *cell, const IndexPath &indexPath);

    TableView *const table;
    const Style style;
    TableViewDataSource *dataSource = nullptr;
    TableViewDelegate *delegate = nullptr;
    QList<Section> sections;
    double contentHeight = 0;
    QMap<IndexPath, TableViewCell *> visibleCells;
    QHash<int, QWidget *> visibleHeaders;
    QHash<QString, QList<TableViewCell *>> pool;
    // Each cell's line, made the first time the cell is in view; it goes with the cell.
    QHash<TableViewCell *, Hairline *> separators;
    QList<IndexPath> selected;
    QMargins separatorInset{15, 0, 0, 0};
    QColor background;
    QColor separatorColor = defaultSeparatorColor();
    QMargins layoutMargins;
    int cellsCreated = 0;
};

TableView::TableView(Style style, QWidget *parent)
    : QAbstractScrollArea(parent), d(std::make_unique<Private>(style, this))
{
    setFrameShape(QFrame::NoFrame);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    verticalScrollBar()->setSingleStep(scrollStep);
    // A thin indicator, as on a phone, rather than a desktop scroll bar with arrows.
    verticalScrollBar()->setStyleSheet(QStringLiteral(
            "QScrollBar:vertical { width: 4px; background: transparent; margin: 0; }"
            "QScrollBar::handle:vertical { background: rgba(0, 0, 0, 80); border-radius: 2px;"
            " min-height: 30px; }"
            "QScrollBar::add-line:vertical, QScrollBar::sub-line:vertical { height: 0; }"
            "QScrollBar::add-page:vertical, QScrollBar::sub-page:vertical { background: none; }"));
}

TableView::~TableView()
{
    // Visible cells and headers are the viewport's children and go with it; pooled cells are
    // hidden children too, but the pool is what owns them.
    for (const QList<TableViewCell *> &cells : std::as_const(d->pool))
        qDeleteAll(cells);
}

TableView::Style TableView::tableStyle() const
{
    return d->style;
}

void TableView::setDataSource(TableViewDataSource *dataSource)
{
    d->dataSource = dataSource;
    reloadData();
}

void TableView::setDelegate(TableViewDelegate *delegate)
{
    d->delegate = delegate;
    // Heights and headers come from the delegate: what was laid out without it is stale.
    if (d->dataSource)
        reloadData();
}

void TableView::reloadData()
{
    // With no sections nothing is in view, so every cell and header leaves by the usual rules.
    d->sections.clear();
    d->layoutVisible(false); // every visible cell stays pooled for the rows asked for again
    d->selected.clear();
    d->recomputeGeometry();
    d->layoutVisible();
    viewport()->update();
}

TableViewCell *TableView::dequeueReusableCellWithIdentifier(const QString &identifier)
{
    const auto pooled = d->pool.find(identifier);
    if (pooled == d->pool.end() || pooled->isEmpty()) {
        ++d->cellsCreated;
        return nullptr;
    }
    return pooled->takeLast();
}

int TableView::numberOfSections() const
{
    return int(d->sections.size());
}

int TableView::numberOfRowsInSection(int section) const
{
    return section >= 0 && section < d->sections.size() ? int(d->sections[section].rowTops.size())
                                                        : 0;
}

QRectF TableView::rectForRowAtIndexPath(const IndexPath &indexPath) const
{
    if (indexPath.row < 0 || indexPath.row >= numberOfRowsInSection(indexPath.section))
        return QRectF();
    const Section &section = d->sections[indexPath.section];
    return QRectF(0, section.rowTops[indexPath.row], viewport()->width(),
                  section.rowHeights[indexPath.row]);
}

QRectF TableView::rectForHeaderInSection(int section) const
{
    if (section < 0 || section >= d->sections.size())
        return QRectF();
    return QRectF(0, d->sections[section].top, viewport()->width(), d->sections[section].header);
}

double TableView::contentHeight() const
{
    return d->contentHeight;
}

TableViewCell *TableView::cellForRowAtIndexPath(const IndexPath &indexPath) const
{
    return d->visibleCells.value(indexPath);
}

QList<IndexPath> TableView::indexPathsForVisibleRows() const
{
    return d->visibleCells.keys();
}

QWidget *TableView::headerViewForSection(int section) const
{
    return d->visibleHeaders.value(section);
}

void TableView::scrollToRowAtIndexPath(const IndexPath &indexPath)
{
    const QRectF row = rectForRowAtIndexPath(indexPath);
    if (!row.isNull())
        setContentOffset(row.top());
}

void TableView::setContentOffset(double y)
{
    verticalScrollBar()->setValue(qRound(y));
}

double TableView::contentOffset() const
{
    return verticalScrollBar()->value();
}

QColor TableView::backgroundColor() const
{
    return d->background;
}

void TableView::setBackgroundColor(const QColor &color)
{
    d->background = color;
    viewport()->update();
}

QColor TableView::separatorColor() const
{
    return d->separatorColor;
}

void TableView::setSeparatorColor(const QColor &color)
{
    d->separatorColor = color;
    for (Hairline *line : std::as_const(d->separators))
        line->setColor(color);
}

QMargins TableView::separatorInset() const
{
    return d->separatorInset;
}

void TableView::setSeparatorInset(const QMargins &inset)
{
    d->separatorInset = inset;
    for (Hairline *line : std::as_const(d->separators))
        line->setInset(inset);
}

QMargins TableView::layoutMargins() const
{
    return d->layoutMargins;
}

void TableView::setLayoutMargins(const QMargins &margins)
{
    d->layoutMargins = margins;
}

void TableView::selectRowAtIndexPath(const IndexPath &indexPath)
{
    if (indexPath.row < 0 || indexPath.row >= numberOfRowsInSection(indexPath.section))
        return;
    const auto at = std::lower_bound(d->selected.begin(), d->selected.end(), indexPath);
    if (at == d->selected.end() || !(*at == indexPath))
        d->selected.insert(at, indexPath);
    if (TableViewCell *cell = d->visibleCells.value(indexPath))
        cell->setSelected(true);
    if (d->delegate)
        d->delegate->didSelectRowAtIndexPath(this, indexPath);
}

void TableView::deselectRowAtIndexPath(const IndexPath &indexPath, bool animated)
{
    Q_UNUSED(animated); // the highlight goes at once
    d->selected.removeOne(indexPath);
    if (TableViewCell *cell = d->visibleCells.value(indexPath))
        cell->setSelected(false);
}

QList<IndexPath> TableView::indexPathsForSelectedRows() const
{
    return d->selected;
}

int TableView::cellsCreated() const
{
    return d->cellsCreated;
}

void TableView::resizeEvent(QResizeEvent *)
{
    // Called for the viewport's resize; heights may depend on the width, so all are asked again.
    d->recomputeGeometry();
    d->layoutVisible();
}

void TableView::scrollContentsBy(int, int)
{
    d->layoutVisible();
    viewport()->update();
}

void TableView::paintEvent(QPaintEvent *event)
{
    QPainter painter(viewport());
    if (d->background.isValid())
        painter.fillRect(event->rect(), d->background);
    else
        painter.fillRect(event->rect(),
                         d->style == Style::Grouped ? groupedBackground() : QColor(Qt::white));
}

void TableView::Private::layoutVisible(bool trimPool)
{
    const double viewTop = table->contentOffset();
    const double viewBottom = viewTop + table->viewport()->height();
    const int width = table->viewport()->width();
    const auto pixels = [viewTop, width](double top, double height) {
        return QRect(0, qRound(top - viewTop), width, qRound(height));
    };

    // What intersects the view, found by bisection so that a scroll costs O(visible rows).
    QList<IndexPath> rows;
    QList<int> headers;
    const auto after = std::upper_bound(sections.cbegin(), sections.cend(), viewTop,
                                        [](double y, const Section &s) { return y < s.top; });
    for (auto s = after == sections.cbegin() ? after : after - 1;
         s != sections.cend() && s->top < viewBottom; ++s) {
        const int section = int(s - sections.cbegin());
        if (intersects(s->top, s->header, viewTop, viewBottom))
            headers.append(section);
        const auto rowAfter = std::upper_bound(s->rowTops.cbegin(), s->rowTops.cend(), viewTop);
        for (auto top = rowAfter == s->rowTops.cbegin() ? rowAfter : rowAfter - 1;
             top != s->rowTops.cend() && *top < viewBottom; ++top) {
            const int row = int(top - s->rowTops.cbegin());
            if (intersects(*top, s->rowHeights[row], viewTop, viewBottom))
                rows.append({section, row});
        }
    }

    // Rows leaving first, so that the rows entering find their cells in the pool.
    for (auto it = visibleCells.begin(); it != visibleCells.end();) {
        if (std::binary_search(rows.cbegin(), rows.cend(), it.key())) {
            ++it;
            continue;
        }
        TableViewCell *cell = it.value();
        it = visibleCells.erase(it);
        cell->disconnect(table);
        cell->hide();
        pool[cell->reuseIdentifier()].append(cell);
    }
    for (auto it = visibleHeaders.begin(); it != visibleHeaders.end();) {
        if (headers.contains(it.key())) {
            ++it;
            continue;
        }
        if (QWidget *header = it.value()) {
            header->hide();
            header->deleteLater();
        }
        it = visibleHeaders.erase(it);
    }

    for (const IndexPath &indexPath : std::as_const(rows)) {
        const Section &section = sections[indexPath.section];
        const QRect geometry =
                pixels(section.rowTops[indexPath.row], section.rowHeights[indexPath.row]);
        if (TableViewCell *cell = visibleCells.value(indexPath)) {
            cell->setGeometry(geometry);
            placeSeparator(cell, indexPath);
            continue;
        }
        TableViewCell *cell = dataSource->cellForRowAtIndexPath(table, indexPath);
        if (!cell) {
            qCWarning(lcPlatform) << "no cell for row" << indexPath.row << "of section"
                                  << indexPath.section;
            continue;
        }
        if (cell->parentWidget() != table->viewport())
            cell->setParent(table->viewport());
        cell->setGeometry(geometry);
        cell->setSelected(std::binary_search(selected.cbegin(), selected.cend(), indexPath));
        QObject::connect(cell, &TableViewCell::tapped, table, [this, cell] {
            const auto visible = std::find(visibleCells.cbegin(), visibleCells.cend(), cell);
            if (visible != visibleCells.cend())
                table->selectRowAtIndexPath(visible.key());
        });
        visibleCells.insert(indexPath, cell);
        placeSeparator(cell, indexPath);
        cell->show();
    }

    // The pool is trimmed only now, after the entering rows took their cells from it.
    if (trimPool) {
        for (QList<TableViewCell *> &cells : pool) {
            while (cells.size() > poolLimit) {
                // Not at once: the cell may be in the middle of emitting tapped.
                TableViewCell *cell = cells.takeFirst();
                separators.remove(cell);
                cell->deleteLater();
            }
        }
    }

    for (int section : std::as_const(headers)) {
        auto header = visibleHeaders.find(section);
        if (header == visibleHeaders.end()) {
            QWidget *view = delegate ? delegate->viewForHeaderInSection(table, section) : nullptr;
            // Kept even when null, so that a section without a header view is asked only once.
            header = visibleHeaders.insert(section, view);
            if (view && view->parentWidget() != table->viewport())
                view->setParent(table->viewport());
        }
        if (QWidget *view = header.value()) {
            view->setGeometry(pixels(sections[section].top, sections[section].header));
            view->show();
        }
    }
}

void TableView::Private::recomputeGeometry()
{
    TableViewDelegate defaults;
    TableViewDelegate *heights = delegate ? delegate : &defaults;
    const int count = dataSource ? qMax(0, dataSource->numberOfSectionsInTableView(table)) : 0;
    QList<Section> laidOut(count);
    double y = 0;
    for (int s = 0; s < count; ++s) {
        Section &section = laidOut[s];
        section.top = y;
        section.header = qMax(0.0, heights->heightForHeaderInSection(table, s));
        y += section.header;
        const int rows = qMax(0, dataSource->numberOfRowsInSection(table, s));
        section.rowTops.reserve(rows);
        section.rowHeights.reserve(rows);
        for (int r = 0; r < rows; ++r) {
            const double height = qMax(0.0, heights->heightForRowAtIndexPath(table, {s, r}));
            section.rowTops.append(y);
            section.rowHeights.append(height);
            y += height;
        }
        section.footer = qMax(0.0, heights->heightForFooterInSection(table, s));
        y += section.footer;
    }
    sections = std::move(laidOut);
    contentHeight = y;

    // Set last: a shorter range moves the offset, and the scroll that follows lays out the new
    // sections.
    QScrollBar *bar = table->verticalScrollBar();
    bar->setPageStep(table->viewport()->height());
    bar->setRange(0, qMax(0, qCeil(contentHeight) - table->viewport()->height()));
}

void TableView::Private::placeSeparator(TableViewCell *cell, const IndexPath &indexPath)
{
    Hairline *&line = separators[cell];
    if (!line) {
        line = new Hairline(cell, separatorColor, 1, Hairline::Placement::Inside);
        line->setInset(separatorInset);
    }
    // On each row's last line of pixels, but for a section's last row.
    line->setSuppressed(indexPath.row == sections[indexPath.section].rowTops.size() - 1);
}

} // namespace bvt
