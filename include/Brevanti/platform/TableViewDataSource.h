#pragma once

/// \file
/// bvt::TableViewDataSource, what a table shows.

#include <Brevanti/brevanti_widgets_export.h>

#include <Brevanti/platform/IndexPath.h>

namespace bvt {

class TableView;
class TableViewCell;

/// What a table shows: its sections, their rows and each row's cell.
class BREVANTI_WIDGETS_EXPORT TableViewDataSource
{
public:
    virtual ~TableViewDataSource() = default;
    /// The number of sections.
    virtual int numberOfSectionsInTableView(TableView *tableView) = 0;
    /// The number of rows in a section.
    virtual int numberOfRowsInSection(TableView *tableView, int section) = 0;
    /// The cell of a row coming into view: a dequeued one
    /// (TableView::dequeueReusableCellWithIdentifier) or a new one, which the table then owns.
    virtual TableViewCell *cellForRowAtIndexPath(TableView *tableView,
                                                 const IndexPath &indexPath) = 0;
};

} // namespace bvt
