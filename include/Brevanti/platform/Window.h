#pragma once

#include <Brevanti/brevanti_widgets_export.h>

#include <Brevanti/platform/ViewController.h>

#include <QObject>
#include <QPointer>

#include <memory>

class QWidget;

namespace bvt {

// A top-level window showing one root controller (a phone's key window).
class BREVANTI_WIDGETS_EXPORT Window : public QObject
{
    Q_OBJECT
public:
    explicit Window(QObject *parent = nullptr);
    ~Window() override;

    void setRootViewController(ViewController *root); // takes ownership
    ViewController *rootViewController() const;
    QWidget *widget() const; // sized to the main screen's bounds, following them
    void show();             // with the root's appearance hooks; makes this the key window

    // The window the user sees: the one shown last, while it exists.
    static Window *keyWindow();

private:
    class Private;
    const std::unique_ptr<Private> d;
};

} // namespace bvt
