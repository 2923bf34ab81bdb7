#include <Brevanti/platform/TableView.h>

#include "core/logging.h"

#include <QMouseEvent>
#include <QPaintEvent>
#include <QPainter>
#include <QScrollBar>
#include <QtMath>

#include <algorithm>

namespace bvt {

namespace {

constexpr int defaultAccessoryMargin = 15;
constexpr int scrollStep = 20;

QColor groupedBackground()
{
    return QColor::fromRgbF(0.94, 0.94, 0.96);
}

QColor separatorColor()
{
    return QColor::fromRgbF(0.78, 0.78, 0.8);
}

QColor selectedBackground()
{
    return QColor::fromRgbF(0.85, 0.85, 0.85);
}

bool intersects(double top, double height, double viewTop, double viewBottom)
{
    return height > 0 && top < viewBottom && top + height > viewTop;
}

// The separators lie above the rows: each cell paints an opaque background that would hide a line
// drawn by the viewport underneath. The overlay keeps itself on top of every cell and header added
// to the viewport, and lets the mouse through to them.
class SeparatorOverlay : public QWidget
{
public:
    explicit SeparatorOverlay(TableView *table) : QWidget(table->viewport()), m_table(table)
    {
        setAttribute(Qt::WA_TransparentForMouseEvents);
        setGeometry(parentWidget()->rect());
        parentWidget()->installEventFilter(this);
    }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (watched == parentWidget()) {
            if (event->type() == QEvent::Resize)
                setGeometry(parentWidget()->rect());
            else if (event->type() == QEvent::ChildAdded)
                raise();
        }
        return false;
    }

    void paintEvent(QPaintEvent *) override
    {
        QPainter painter(this);
        const QMargins inset = m_table->separatorInset();
        const QList<IndexPath> rows = m_table->indexPathsForVisibleRows();
        for (const IndexPath &indexPath : rows) {
            const QRect cell = m_table->cellForRowAtIndexPath(indexPath)->geometry();
            if (indexPath.row == m_table->numberOfRowsInSection(indexPath.section) - 1
                || cell.isEmpty())
                continue;
            painter.fillRect(
                    QRect(inset.left(), cell.bottom(), width() - inset.left() - inset.right(), 1),
                    separatorColor());
        }
    }

private:
    TableView *m_table;
};

// A section's place in the content, from the delegate's heights.
struct Section
{
    double top = 0, header = 0, footer = 0;
    QList<double> rowTops, rowHeights;
};

} // namespace

class TableViewCell::Private
{
public:
    Private(const QString &reuseIdentifier, TableViewCell *cell)
        : reuseIdentifier(reuseIdentifier), contentView(new QWidget(cell))
    { }

    const QString reuseIdentifier;
    QWidget *const contentView;
    QWidget *accessoryView = nullptr;
    SelectionStyle selectionStyle = SelectionStyle::Default;
    QMargins layoutMargins;
    bool selected = false;
};

TableViewCell::TableViewCell(Style style, const QString &reuseIdentifier, QWidget *parent)
    : QWidget(parent), d(std::make_unique<Private>(reuseIdentifier, this))
{
    Q_UNUSED(style); // both styles look alike here: the screens fill the content view themselves
    layoutAccessory();
}

TableViewCell::~TableViewCell() = default;

QString TableViewCell::reuseIdentifier() const
{
    return d->reuseIdentifier;
}

QWidget *TableViewCell::contentView() const
{
    return d->contentView;
}

QWidget *TableViewCell::accessoryView() const
{
    return d->accessoryView;
}

void TableViewCell::setAccessoryView(QWidget *view)
{
    if (view == d->accessoryView)
        return;
    if (d->accessoryView) {
        // Later, not now: the old accessory may be the very control whose signal got us here.
        d->accessoryView->hide();
        d->accessoryView->deleteLater();
    }
    d->accessoryView = view;
    if (view) {
        view->setParent(this);
        view->show();
    }
    layoutAccessory();
}

TableViewCell::SelectionStyle TableViewCell::selectionStyle() const
{
    return d->selectionStyle;
}

void TableViewCell::setSelectionStyle(SelectionStyle style)
{
    d->selectionStyle = style;
    update();
}

QMargins TableViewCell::layoutMargins() const
{
    return d->layoutMargins;
}

void TableViewCell::setLayoutMargins(const QMargins &margins)
{
    d->layoutMargins = margins;
    layoutAccessory();
}

bool TableViewCell::isSelected() const
{
    return d->selected;
}

void TableViewCell::setSelected(bool selected)
{
    if (selected == d->selected)
        return;
    d->selected = selected;
    update();
}

void TableViewCell::mouseReleaseEvent(QMouseEvent *event)
{
    // A child control that took the press also takes the release, so only the cell's own
    // surface (and passive children such as labels) gets here.
    if (event->button() == Qt::LeftButton && rect().contains(event->position().toPoint())) {
        event->accept();
        emit tapped();
        return;
    }
    QWidget::mouseReleaseEvent(event);
}

void TableViewCell::paintEvent(QPaintEvent *event)
{
    QPainter painter(this);
    const bool highlighted = d->selected && d->selectionStyle == SelectionStyle::Default;
    painter.fillRect(event->rect(), highlighted ? selectedBackground() : QColor(Qt::white));
}

void TableViewCell::resizeEvent(QResizeEvent *)
{
    layoutAccessory();
}

void TableViewCell::layoutAccessory()
{
    int contentWidth = width();
    if (d->accessoryView) {
        const int margin =
                d->layoutMargins.right() > 0 ? d->layoutMargins.right() : defaultAccessoryMargin;
        const QSize size = d->accessoryView->sizeHint();
        const int x = width() - margin - size.width();
        d->accessoryView->setGeometry(x, (height() - size.height()) / 2, size.width(),
                                      size.height());
        contentWidth = qMax(0, x);
    }
    d->contentView->setGeometry(0, 0, contentWidth, height());
}

class TableView::Private
{
public:
    explicit Private(Style style) : style(style) { }

    const Style style;
    TableViewDataSource *dataSource = nullptr;
    TableViewDelegate *delegate = nullptr;
    QList<Section> sections;
    double contentHeight = 0;
    QMap<IndexPath, TableViewCell *> visibleCells;
    QHash<int, QWidget *> visibleHeaders;
    QHash<QString, QList<TableViewCell *>> pool;
    QList<IndexPath> selected;
    QMargins separatorInset{15, 0, 0, 0};
    QMargins layoutMargins;
    int cellsCreated = 0;
};

TableView::TableView(Style style, QWidget *parent)
    : QAbstractScrollArea(parent), d(std::make_unique<Private>(style))
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
    new SeparatorOverlay(this);
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
    layoutVisible(false); // every visible cell stays pooled for the rows asked for again
    d->selected.clear();
    recomputeGeometry();
    layoutVisible();
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

QMargins TableView::separatorInset() const
{
    return d->separatorInset;
}

void TableView::setSeparatorInset(const QMargins &inset)
{
    d->separatorInset = inset;
    viewport()->update();
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
    recomputeGeometry();
    layoutVisible();
}

void TableView::scrollContentsBy(int, int)
{
    layoutVisible();
    viewport()->update();
}

void TableView::paintEvent(QPaintEvent *event)
{
    QPainter painter(viewport());
    painter.fillRect(event->rect(), d->style == Style::Grouped ? groupedBackground() : Qt::white);
}

void TableView::layoutVisible(bool trimPool)
{
    const double viewTop = contentOffset();
    const double viewBottom = viewTop + viewport()->height();
    const int width = viewport()->width();
    const auto pixels = [viewTop, width](double top, double height) {
        return QRect(0, qRound(top - viewTop), width, qRound(height));
    };

    // What intersects the view, found by bisection so that a scroll costs O(visible rows).
    QList<IndexPath> rows;
    QList<int> headers;
    const auto after = std::upper_bound(d->sections.cbegin(), d->sections.cend(), viewTop,
                                        [](double y, const Section &s) { return y < s.top; });
    for (auto s = after == d->sections.cbegin() ? after : after - 1;
         s != d->sections.cend() && s->top < viewBottom; ++s) {
        const int section = int(s - d->sections.cbegin());
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
    for (auto it = d->visibleCells.begin(); it != d->visibleCells.end();) {
        if (std::binary_search(rows.cbegin(), rows.cend(), it.key())) {
            ++it;
            continue;
        }
        TableViewCell *cell = it.value();
        it = d->visibleCells.erase(it);
        cell->disconnect(this);
        cell->hide();
        d->pool[cell->reuseIdentifier()].append(cell);
    }
    for (auto it = d->visibleHeaders.begin(); it != d->visibleHeaders.end();) {
        if (headers.contains(it.key())) {
            ++it;
            continue;
        }
        if (QWidget *header = it.value()) {
            header->hide();
            header->deleteLater();
        }
        it = d->visibleHeaders.erase(it);
    }

    for (const IndexPath &indexPath : std::as_const(rows)) {
        const Section &section = d->sections[indexPath.section];
        const QRect geometry =
                pixels(section.rowTops[indexPath.row], section.rowHeights[indexPath.row]);
        if (TableViewCell *cell = d->visibleCells.value(indexPath)) {
            cell->setGeometry(geometry);
            continue;
        }
        TableViewCell *cell = d->dataSource->cellForRowAtIndexPath(this, indexPath);
        if (!cell) {
            qCWarning(lcPlatform) << "no cell for row" << indexPath.row << "of section"
                                  << indexPath.section;
            continue;
        }
        if (cell->parentWidget() != viewport())
            cell->setParent(viewport());
        cell->setGeometry(geometry);
        cell->setSelected(std::binary_search(d->selected.cbegin(), d->selected.cend(), indexPath));
        connect(cell, &TableViewCell::tapped, this, [this, cell] {
            const auto visible = std::find(d->visibleCells.cbegin(), d->visibleCells.cend(), cell);
            if (visible != d->visibleCells.cend())
                selectRowAtIndexPath(visible.key());
        });
        d->visibleCells.insert(indexPath, cell);
        cell->show();
    }

    // The pool is trimmed only now, after the entering rows took their cells from it.
    if (trimPool) {
        for (QList<TableViewCell *> &pool : d->pool) {
            while (pool.size() > poolLimit) {
                // Not at once: the cell may be in the middle of emitting tapped.
                pool.takeFirst()->deleteLater();
            }
        }
    }

    for (int section : std::as_const(headers)) {
        auto header = d->visibleHeaders.find(section);
        if (header == d->visibleHeaders.end()) {
            QWidget *view =
                    d->delegate ? d->delegate->viewForHeaderInSection(this, section) : nullptr;
            // Kept even when null, so that a section without a header view is asked only once.
            header = d->visibleHeaders.insert(section, view);
            if (view && view->parentWidget() != viewport())
                view->setParent(viewport());
        }
        if (QWidget *view = header.value()) {
            view->setGeometry(pixels(d->sections[section].top, d->sections[section].header));
            view->show();
        }
    }
}

void TableView::recomputeGeometry()
{
    TableViewDelegate defaults;
    TableViewDelegate *delegate = d->delegate ? d->delegate : &defaults;
    const int count = d->dataSource ? qMax(0, d->dataSource->numberOfSectionsInTableView(this)) : 0;
    QList<Section> sections(count);
    double y = 0;
    for (int s = 0; s < count; ++s) {
        Section &section = sections[s];
        section.top = y;
        section.header = qMax(0.0, delegate->heightForHeaderInSection(this, s));
        y += section.header;
        const int rows = qMax(0, d->dataSource->numberOfRowsInSection(this, s));
        section.rowTops.reserve(rows);
        section.rowHeights.reserve(rows);
        for (int r = 0; r < rows; ++r) {
            const double height = qMax(0.0, delegate->heightForRowAtIndexPath(this, {s, r}));
            section.rowTops.append(y);
            section.rowHeights.append(height);
            y += height;
        }
        section.footer = qMax(0.0, delegate->heightForFooterInSection(this, s));
        y += section.footer;
    }
    d->sections = std::move(sections);
    d->contentHeight = y;

    // Set last: a shorter range moves the offset, and the scroll that follows lays out the new
    // sections.
    QScrollBar *bar = verticalScrollBar();
    bar->setPageStep(viewport()->height());
    bar->setRange(0, qMax(0, qCeil(d->contentHeight) - viewport()->height()));
}

} // namespace bvt
