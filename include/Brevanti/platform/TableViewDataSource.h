#pragma once

#include <Brevanti/brevanti_widgets_export.h>

#include <Brevanti/platform/IndexPath.h>

namespace bvt {

class TableView;
class TableViewCell;

// What a table shows: its sections, their rows and each row's cell.
class BREVANTI_WIDGETS_EXPORT TableViewDataSource
{
public:
    virtual ~TableViewDataSource() = default;
    virtual int numberOfSectionsInTableView(TableView *tableView) = 0;
    virtual int numberOfRowsInSection(TableView *tableView, int section) = 0;
    virtual TableViewCell *cellForRowAtIndexPath(TableView *tableView,
                                                 const IndexPath &indexPath) = 0;
};

} // namespace bvt
