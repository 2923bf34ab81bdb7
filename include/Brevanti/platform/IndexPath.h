#pragma once

#include <Brevanti/brevanti_widgets_export.h>

namespace bvt {

// A row's place in a table: its section and its row within the section.
struct BREVANTI_WIDGETS_EXPORT IndexPath
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

} // namespace bvt
