#pragma once

#include <Brevanti/platform/NavigationController.h>
#include <Brevanti/platform/Window.h>

#include <QSize>

#include <memory>

// The screens' bench: a phone screen (375 x 667 unless told) and a shown key window on it, whose
// root is the given controller or else a navigation stack over a plain one.
class PhoneWindow
{
public:
    static constexpr QSize portrait{375, 667};

    explicit PhoneWindow(bvt::ViewController *root = nullptr, const QSize &screen = portrait);
    ~PhoneWindow();
    PhoneWindow(const PhoneWindow &) = delete;
    PhoneWindow &operator=(const PhoneWindow &) = delete;

    QWidget *widget() const { return m_window->widget(); }
    bvt::ViewController *root() const { return m_window->rootViewController(); }
    // The root, when it is a navigation stack.
    bvt::NavigationController *navigation() const
    {
        return qobject_cast<bvt::NavigationController *>(root());
    }
    // Where a view lies in the window.
    QRect frameOf(QWidget *view) const
    {
        return {view->mapTo(widget(), QPoint(0, 0)), view->size()};
    }

    // The library started against the local service that a LocalService routes it to, with this
    // device registered as on a first launch; false when no identifier came back.
    static bool startLibraryWithNewDevice();

private:
    std::unique_ptr<bvt::Window> m_window;
};
