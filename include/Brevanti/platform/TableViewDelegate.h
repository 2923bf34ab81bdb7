#pragma once

/// \file
/// bvt::TableViewDelegate, how a table lays out its sections and answers taps.

#include <Brevanti/brevanti_widgets_export.h>

#include <Brevanti/platform/IndexPath.h>

#include <QWidget>

namespace bvt {

class TableView;

/// How a table lays out its sections and what a tap on a row does.
class BREVANTI_WIDGETS_EXPORT TableViewDelegate
{
public:
    virtual ~TableViewDelegate() = default;
    /// Asked each time the header comes into view; the table owns and later deletes what it gets.
    virtual QWidget *viewForHeaderInSection(TableView *, int) { return nullptr; }
    /// The height of a section's header; none by default.
    virtual double heightForHeaderInSection(TableView *, int) { return 0; }
    /// The height of a row; 44 by default.
    virtual double heightForRowAtIndexPath(TableView *, const IndexPath &) { return 44; }
    /// The height of a section's footer; none by default.
    virtual double heightForFooterInSection(TableView *, int) { return 0; }
    /// A row was selected, by a tap or TableView::selectRowAtIndexPath; nothing by default.
    virtual void didSelectRowAtIndexPath(TableView *, const IndexPath &) { }
};

} // namespace bvt
