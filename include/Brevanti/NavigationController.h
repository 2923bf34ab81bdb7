#pragma once

#include <Brevanti/ViewController.h>

#include <QColor>
#include <QList>
#include <QWidget>

class QLabel;
class QStackedWidget;
class QToolButton;

namespace bvt {

// A bar with a centred title and a right-hand button, for navigation controllers and popup cards.
class NavigationBar : public QWidget
{
    Q_OBJECT
public:
    static constexpr int height = 44;

    explicit NavigationBar(QWidget *parent = nullptr);

    void setItem(const NavigationItem &item); // title and right button of the top controller
    QString title() const;
    QToolButton *rightButton() const; // hidden when the item has none

    void setBarTintColor(const QColor &color); // background
    void setTintColor(const QColor &color);    // button text
    void setTitleFont(const QFont &font);
    void setTitleColor(const QColor &color);

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    QLabel *m_title;
    QToolButton *m_right;
    QColor m_barTint;
};

// A stack of controllers under a navigation bar; the top one's view fills the rest.
class NavigationController : public ViewController
{
    Q_OBJECT
public:
    // Without a root the stack starts empty; the first controller pushed then is its root.
    explicit NavigationController(ViewController *root, QObject *parent = nullptr);

    QList<ViewController *> viewControllers() const;
    ViewController *topViewController() const;
    NavigationBar *navigationBar();

    void pushViewController(ViewController *controller, bool animated);
    // The one popped, now owned by the caller; never the root, so null below two controllers.
    ViewController *popViewControllerAnimated(bool animated);

    void viewWillAppear(bool animated) override; // passed on to the top controller
    void viewDidAppear(bool animated) override;

protected:
    void loadView() override;

private:
    void showTop(bool animated);

    QList<ViewController *> m_controllers;
    NavigationBar *m_bar = nullptr;
    QStackedWidget *m_stack = nullptr;
};

// A top-level window showing one root controller (a phone's key window).
class Window : public QObject
{
    Q_OBJECT
public:
    explicit Window(QObject *parent = nullptr);
    ~Window() override;

    void setRootViewController(ViewController *root); // takes ownership
    ViewController *rootViewController() const;
    QWidget *widget() const; // sized to the main screen's bounds, following them
    void show();             // with the root's appearance hooks

private:
    QWidget *m_widget;
    ViewController *m_root = nullptr;
};

} // namespace bvt
