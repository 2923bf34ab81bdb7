#pragma once

#include <Brevanti/brevanti_widgets_export.h>

#include <Brevanti/platform/ViewController.h>

#include <QList>

#include <memory>

class QStackedWidget;
class QTabBar;

namespace bvt {

// Controllers side by side, one shown at a time, chosen with a tab bar at the bottom.
class BREVANTI_WIDGETS_EXPORT TabBarController : public ViewController
{
    Q_OBJECT
public:
    explicit TabBarController(QObject *parent = nullptr);
    ~TabBarController() override;

    QList<ViewController *> viewControllers() const;
    void setViewControllers(const QList<ViewController *> &controllers); // takes ownership
    ViewController *selectedViewController() const;
    int selectedIndex() const;
    void setSelectedIndex(int index);

    void viewWillAppear(bool animated) override; // passed on to the selected controller
    void viewDidAppear(bool animated) override;

protected:
    void loadView() override;

private:
    class Private;

    void fillTabs(); // pages and tabs for the controllers, the selected one shown

    const std::unique_ptr<Private> d;
};

} // namespace bvt
