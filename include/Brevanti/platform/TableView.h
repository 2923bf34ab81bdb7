#pragma once

/// \file
/// bvt::TableView, a scrolling list of sections and rows.

#include <Brevanti/brevanti_widgets_export.h>

#include <Brevanti/platform/IndexPath.h>
#include <Brevanti/platform/TableViewCell.h>
#include <Brevanti/platform/TableViewDataSource.h>
#include <Brevanti/platform/TableViewDelegate.h>

#include <QAbstractScrollArea>
#include <QColor>
#include <QHash>
#include <QList>
#include <QMap>
#include <QMargins>
#include <QPointer>
#include <QWidget>

#include <memory>

namespace bvt {

/// A vertically scrolling list of sections, each a header, rows and a footer, laid out from the
/// delegate's heights. Only the rows in view have cell widgets, plus a small pool of cells kept for
/// reuse; headers are asked for whenever they come into view.
class BREVANTI_WIDGETS_EXPORT TableView : public QAbstractScrollArea
{
    Q_OBJECT
public:
    /// How the table's background looks behind and between the rows.
    enum class Style {
        Plain,  ///< white
        Grouped ///< light grey, as a phone's settings
    };
    static constexpr int poolLimit = 2; ///< spare cells kept per reuse identifier between layouts

    /// An empty table; it asks for sections once it has a data source.
    explicit TableView(Style style, QWidget *parent = nullptr);
    /// Takes the visible cells and headers and the pooled cells with it.
    ~TableView() override;

    Style tableStyle() const; ///< not style(): that is QWidget's QStyle
    /// What the table shows; setting one reloads the table. The table does not take ownership.
    void setDataSource(TableViewDataSource *dataSource);
    /// Heights, headers and taps; setting one reloads the table once it has a data source. The
    /// table does not take ownership.
    void setDelegate(TableViewDelegate *delegate);

    void reloadData(); ///< visible cells go back to the pool; sections and rows are asked for again
    /// A pooled cell of that reuse identifier, exactly as it was left, or null: then the data
    /// source makes a new one.
    TableViewCell *dequeueReusableCellWithIdentifier(const QString &identifier);

    /// The number of sections, as the data source last told it.
    int numberOfSections() const;
    /// The number of rows in the section, as the data source last told it; 0 for no such section.
    int numberOfRowsInSection(int section) const;
    QRectF rectForRowAtIndexPath(const IndexPath &indexPath) const; ///< in content coordinates
    /// The header's place in content coordinates; a null rectangle for no such section.
    QRectF rectForHeaderInSection(int section) const;
    /// The height of every section's header, rows and footer together.
    double contentHeight() const;
    /// The cell of a row; only a visible row's, null for any other.
    TableViewCell *cellForRowAtIndexPath(const IndexPath &indexPath) const;
    /// The rows that have a cell in view, in table order.
    QList<IndexPath> indexPathsForVisibleRows() const;
    QWidget *headerViewForSection(int section) const;        ///< only a visible header
    void scrollToRowAtIndexPath(const IndexPath &indexPath); ///< to the top when it can
    /// How far the content is scrolled, in pixels from its top.
    ///@{
    void setContentOffset(double y);
    double contentOffset() const;
    ///@}

    /// The colour behind and between the rows; the style's (white, or the grouped light grey)
    /// while it is invalid, as by default.
    ///@{
    QColor backgroundColor() const;
    void setBackgroundColor(const QColor &color);
    ///@}
    /// The colour of the lines between rows; a light grey by default.
    ///@{
    QColor separatorColor() const;
    void setSeparatorColor(const QColor &color);
    ///@}
    /// Where the lines between rows start and end; 15 pixels from the left by default.
    ///@{
    QMargins separatorInset() const;
    void setSeparatorInset(const QMargins &inset);
    ///@}
    /// Margins kept for the data source's cells; the table itself lays out nothing by them.
    ///@{
    QMargins layoutMargins() const;
    void setLayoutMargins(const QMargins &margins);
    ///@}

    void selectRowAtIndexPath(const IndexPath &indexPath); ///< as a tap does, telling the delegate
    /// Takes the row out of the selection; the highlight goes at once, animated or not.
    void deselectRowAtIndexPath(const IndexPath &indexPath, bool animated);
    /// The selected rows, in table order; a reload clears them.
    QList<IndexPath> indexPathsForSelectedRows() const;

    int cellsCreated() const; ///< cells dequeued empty-handed since construction (for benchmarks)

protected:
    void resizeEvent(QResizeEvent *event) override;
    void scrollContentsBy(int dx, int dy) override;
    void paintEvent(QPaintEvent *event) override;

private:
    class Private;
    const std::unique_ptr<Private> d;
};

} // namespace bvt
