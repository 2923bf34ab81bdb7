#pragma once

#include <QAbstractScrollArea>
#include <QHash>
#include <QList>
#include <QMap>
#include <QMargins>
#include <QPointer>
#include <QWidget>

namespace bvt {

struct IndexPath
{
    int section = 0;
    int row = 0;
    friend bool operator==(const IndexPath &a, const IndexPath &b)
    {
        return a.section == b.section && a.row == b.row;
    }
    friend bool operator<(const IndexPath &a, const IndexPath &b)
    {
        return a.section != b.section ? a.section < b.section : a.row < b.row;
    }
};

// One row's widget. Cells are reused: a cell scrolled out of sight goes back to the table's pool
// and dequeueReusableCellWithIdentifier hands it out again exactly as it is.
class TableViewCell : public QWidget
{
    Q_OBJECT
public:
    enum class Style { Default, Subtitle };
    enum class SelectionStyle { None, Default };

    TableViewCell(Style style, const QString &reuseIdentifier, QWidget *parent = nullptr);

    QString reuseIdentifier() const;
    QWidget *contentView() const; // fills the cell but for the accessory
    QWidget *accessoryView() const;
    void setAccessoryView(QWidget *view); // takes ownership; right-aligned, vertically centred
    SelectionStyle selectionStyle() const;
    void setSelectionStyle(SelectionStyle style);
    QMargins layoutMargins() const;
    void setLayoutMargins(const QMargins &margins);
    bool isSelected() const;
    void setSelected(bool selected);

Q_SIGNALS:
    void tapped(); // a click on the cell itself, not on a child control

protected:
    void mouseReleaseEvent(QMouseEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    void layoutAccessory();

    QString m_reuseIdentifier;
    QWidget *m_contentView;
    QWidget *m_accessoryView = nullptr;
    SelectionStyle m_selectionStyle = SelectionStyle::Default;
    QMargins m_layoutMargins;
    bool m_selected = false;
};

class TableView;

class TableViewDataSource
{
public:
    virtual ~TableViewDataSource() = default;
    virtual int numberOfSectionsInTableView(TableView *tableView) = 0;
    virtual int numberOfRowsInSection(TableView *tableView, int section) = 0;
    virtual TableViewCell *cellForRowAtIndexPath(TableView *tableView,
                                                 const IndexPath &indexPath) = 0;
};

class TableViewDelegate
{
public:
    virtual ~TableViewDelegate() = default;
    // Asked each time the header comes into view; the table owns and later deletes what it gets.
    virtual QWidget *viewForHeaderInSection(TableView *, int) { return nullptr; }
    virtual double heightForHeaderInSection(TableView *, int) { return 0; }
    virtual double heightForRowAtIndexPath(TableView *, const IndexPath &) { return 44; }
    virtual double heightForFooterInSection(TableView *, int) { return 0; }
    virtual void didSelectRowAtIndexPath(TableView *, const IndexPath &) { }
};

// A vertically scrolling list of sections, each a header, rows and a footer, laid out from the
// delegate's heights. Only the rows in view have cell widgets, plus a small pool of cells kept for
// reuse; headers are asked for whenever they come into view.
class TableView : public QAbstractScrollArea
{
    Q_OBJECT
public:
    enum class Style { Plain, Grouped };
    static constexpr int poolLimit = 2; // spare cells kept per reuse identifier between layouts

    explicit TableView(Style style, QWidget *parent = nullptr);
    ~TableView() override;

    Style tableStyle() const; // not style(): that is QWidget's QStyle
    void setDataSource(TableViewDataSource *dataSource);
    void setDelegate(TableViewDelegate *delegate);

    void reloadData(); // visible cells go back to the pool; sections and rows are asked for again
    TableViewCell *dequeueReusableCellWithIdentifier(const QString &identifier);

    int numberOfSections() const;
    int numberOfRowsInSection(int section) const;
    QRectF rectForRowAtIndexPath(const IndexPath &indexPath) const; // in content coordinates
    QRectF rectForHeaderInSection(int section) const;
    double contentHeight() const;
    TableViewCell *cellForRowAtIndexPath(const IndexPath &indexPath) const; // only a visible row's
    QList<IndexPath> indexPathsForVisibleRows() const;
    QWidget *headerViewForSection(int section) const;        // only a visible header
    void scrollToRowAtIndexPath(const IndexPath &indexPath); // to the top when it can
    void setContentOffset(double y);
    double contentOffset() const;

    QMargins separatorInset() const;
    void setSeparatorInset(const QMargins &inset);
    QMargins layoutMargins() const;
    void setLayoutMargins(const QMargins &margins);

    void selectRowAtIndexPath(const IndexPath &indexPath); // as a tap does, telling the delegate
    void deselectRowAtIndexPath(const IndexPath &indexPath, bool animated);
    QList<IndexPath> indexPathsForSelectedRows() const;

    int cellsCreated() const; // cells dequeued empty-handed since construction (for benchmarks)

protected:
    void resizeEvent(QResizeEvent *event) override;
    void scrollContentsBy(int dx, int dy) override;
    void paintEvent(QPaintEvent *event) override;

private:
    void layoutVisible(bool trimPool = true);
    void recomputeGeometry();

    Style m_style;
    TableViewDataSource *m_dataSource = nullptr;
    TableViewDelegate *m_delegate = nullptr;
    struct Section
    {
        double top = 0, header = 0, footer = 0;
        QList<double> rowTops, rowHeights;
    };
    QList<Section> m_sections;
    double m_contentHeight = 0;
    QMap<IndexPath, TableViewCell *> m_visibleCells;
    QHash<int, QWidget *> m_visibleHeaders;
    QHash<QString, QList<TableViewCell *>> m_pool;
    QList<IndexPath> m_selected;
    QMargins m_separatorInset;
    QMargins m_layoutMargins;
    int m_cellsCreated = 0;
};

} // namespace bvt
