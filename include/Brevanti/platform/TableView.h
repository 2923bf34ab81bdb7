#pragma once

#include <Brevanti/brevanti_widgets_export.h>

#include <Brevanti/platform/IndexPath.h>
#include <Brevanti/platform/TableViewCell.h>
#include <Brevanti/platform/TableViewDataSource.h>
#include <Brevanti/platform/TableViewDelegate.h>

#include <QAbstractScrollArea>
#include <QHash>
#include <QList>
#include <QMap>
#include <QMargins>
#include <QPointer>
#include <QWidget>

#include <memory>

namespace bvt {

// A vertically scrolling list of sections, each a header, rows and a footer, laid out from the
// delegate's heights. Only the rows in view have cell widgets, plus a small pool of cells kept for
// reuse; headers are asked for whenever they come into view.
class BREVANTI_WIDGETS_EXPORT TableView : public QAbstractScrollArea
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
    class Private;

    void layoutVisible(bool trimPool = true);
    void recomputeGeometry();

    const std::unique_ptr<Private> d;
};

} // namespace bvt
