#pragma once

#include <Brevanti/brevanti_widgets_export.h>

#include <Brevanti/platform/IndexPath.h>

#include <QWidget>

namespace bvt {

class TableView;

// How a table lays out its sections and what a tap on a row does.
class BREVANTI_WIDGETS_EXPORT TableViewDelegate
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

} // namespace bvt
