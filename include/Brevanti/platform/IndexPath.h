#pragma once

/// \file
/// bvt::IndexPath, a row's place in a table.

#include <Brevanti/brevanti_widgets_export.h>

namespace bvt {

/// A row's place in a table: its section and its row within the section.
struct BREVANTI_WIDGETS_EXPORT IndexPath
{
    int section = 0; ///< the section, from 0
    int row = 0;     ///< the row within the section, from 0
    /// The same section and row.
    friend bool operator==(const IndexPath &a, const IndexPath &b)
    {
        return a.section == b.section && a.row == b.row;
    }
    /// Table order: by section, then by row.
    friend bool operator<(const IndexPath &a, const IndexPath &b)
    {
        return a.section != b.section ? a.section < b.section : a.row < b.row;
    }
};

} // namespace bvt
