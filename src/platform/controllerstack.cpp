#include "platform/controllerstack.h"

#include <Brevanti/platform/NavigationBar.h>
#include <Brevanti/platform/ViewController.h>

#include <QWidget>

namespace bvt {

ControllerStack::ControllerStack(QObject *owner, std::function<void()> topDeleted)
    : m_owner(owner), m_topDeleted(std::move(topDeleted))
{ }

QList<ViewController *> ControllerStack::controllers() const
{
    return m_controllers;
}

ViewController *ControllerStack::top() const
{
    return m_controllers.isEmpty() ? nullptr : m_controllers.last();
}

void ControllerStack::setBar(NavigationBar *bar)
{
    m_bar = bar;
}

void ControllerStack::push(ViewController *controller)
{
    controller->setParent(m_owner);
    m_controllers.append(controller);
    // In the name of the owner, which holds this stack: the connections go with both.
    QObject::connect(controller, &ViewController::titleChanged, m_owner, [this, controller] {
        if (m_bar && top() == controller)
            m_bar->setItem(controller->navigationItem());
    });
    // A controller deleted on the stack leaves it (its view went with it).
    QObject::connect(controller, &QObject::destroyed, m_owner, [this, controller] {
        const bool wasTop = top() == controller;
        m_controllers.removeOne(controller);
        if (wasTop)
            m_topDeleted();
    });
}

ViewController *ControllerStack::pop()
{
    if (m_controllers.size() < 2)
        return nullptr;
    ViewController *popped = m_controllers.takeLast();
    QObject::disconnect(popped, nullptr, m_owner, nullptr);
    if (popped->isViewLoaded()) {
        popped->view()->hide();
        popped->view()->setParent(nullptr); // which takes it out of the owner's widgets
    }
    popped->setParent(nullptr);
    return popped;
}

void ControllerStack::showTop(bool animated, bool visible,
                              const std::function<void(QWidget *)> &place)
{
    ViewController *top = this->top();
    if (!top || !m_bar)
        return;
    QWidget *view = top->view();
    // The hooks only mean something when the change is seen.
    if (visible)
        top->viewWillAppear(animated);
    place(view);
    m_bar->setItem(top->navigationItem());
    if (visible)
        top->viewDidAppear(animated);
}

} // namespace bvt
