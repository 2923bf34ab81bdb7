#pragma once

#include <QList>
#include <QPointer>

#include <functional>

class QObject;
class QWidget;

namespace bvt {

class NavigationBar;
class ViewController;

// The stack of controllers behind NavigationController and PopupController. The owner holds the
// controllers on it as their QObject parent until they are popped, and shows the top one under a
// bar that names it; where the top's view goes is the owner's business.
class ControllerStack
{
public:
    // topDeleted: the top controller was deleted while on the stack, so the owner shows the next.
    ControllerStack(QObject *owner, std::function<void()> topDeleted);

    QList<ViewController *> controllers() const;
    ViewController *top() const;
    void setBar(NavigationBar *bar); // the owner's bar, once made; it names the top from then on

    void push(ViewController *controller);
    // The top one, back to the caller with its view hidden and unparented; null for the root.
    ViewController *pop();
    // Brings the top's view forward with place, inside the appearance hooks when visible.
    void showTop(bool animated, bool visible, const std::function<void(QWidget *)> &place);

private:
    QObject *m_owner;
    std::function<void()> m_topDeleted;
    QList<ViewController *> m_controllers;
    QPointer<NavigationBar> m_bar;
};

} // namespace bvt
