#pragma once

#include <QWidget>

namespace bvt {

// A view's tag, to find it again among its parent's descendants.
void setViewTag(QWidget *view, int tag);
int viewTag(const QWidget *view);
QWidget *viewWithTag(QWidget *root, int tag); // root itself or a descendant; nullptr when none

} // namespace bvt
