#pragma once

/// \file
/// bvt::Window, a phone's key window.

#include <Brevanti/brevanti_widgets_export.h>

#include <Brevanti/platform/ViewController.h>

#include <QObject>
#include <QPointer>

#include <memory>

class QWidget;

namespace bvt {

/// A top-level window showing one root controller (a phone's key window).
class BREVANTI_WIDGETS_EXPORT Window : public QObject
{
    Q_OBJECT
public:
    /// An empty window of the main screen's size, not shown yet.
    explicit Window(QObject *parent = nullptr);
    /// Takes the root controller (and what it presents) and the widget with it.
    ~Window() override;

    void setRootViewController(ViewController *root); ///< takes ownership; deletes the one before
    /// The controller the window shows.
    ViewController *rootViewController() const;
    QWidget *widget() const; ///< sized to the main screen's bounds, following them
    void show();             ///< with the root's appearance hooks; makes this the key window

    /// The window the user sees: the one shown last, while it exists.
    static Window *keyWindow();

private:
    class Private;
    const std::unique_ptr<Private> d;
};

} // namespace bvt
