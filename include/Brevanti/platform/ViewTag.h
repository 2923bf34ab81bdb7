#pragma once

/// \file
/// Tags that find a view again among its parent's descendants.

#include <Brevanti/brevanti_widgets_export.h>

#include <QWidget>

namespace bvt {

/// A view's tag, to find it again among its parent's descendants; 0 until set.
///@{
BREVANTI_WIDGETS_EXPORT void setViewTag(QWidget *view, int tag);
BREVANTI_WIDGETS_EXPORT int viewTag(const QWidget *view);
BREVANTI_WIDGETS_EXPORT QWidget *
viewWithTag(QWidget *root, int tag); ///< root itself or a descendant; nullptr when none
///@}

} // namespace bvt
