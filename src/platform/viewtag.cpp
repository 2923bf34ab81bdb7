#include <Brevanti/platform/ViewTag.h>

namespace bvt {

namespace {

const char tagProperty[] = "bvtTag";

} // namespace

void setViewTag(QWidget *view, int tag)
{
    view->setProperty(tagProperty, tag);
}

int viewTag(const QWidget *view)
{
    return view->property(tagProperty).toInt();
}

QWidget *viewWithTag(QWidget *root, int tag)
{
    if (!root)
        return nullptr;
    if (viewTag(root) == tag)
        return root;
    const QList<QWidget *> descendants = root->findChildren<QWidget *>();
    for (QWidget *view : descendants) {
        if (viewTag(view) == tag)
            return view;
    }
    return nullptr;
}

} // namespace bvt
