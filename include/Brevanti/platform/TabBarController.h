#pragma once

/// \file
/// bvt::TabBarController, controllers side by side under a tab bar.

#include <Brevanti/brevanti_widgets_export.h>

#include <Brevanti/platform/ViewController.h>

#include <QList>

#include <memory>

class QStackedWidget;
class QTabBar;

namespace bvt {

/// Controllers side by side, one shown at a time, chosen with a tab bar at the bottom.
class BREVANTI_WIDGETS_EXPORT TabBarController : public ViewController
{
    Q_OBJECT
public:
    /// A tab bar with no controllers.
    explicit TabBarController(QObject *parent = nullptr);
    ~TabBarController() override;

    /// The controllers, one tab each; setting them selects the first.
    ///@{
    QList<ViewController *> viewControllers() const;
    void setViewControllers(const QList<ViewController *> &controllers); ///< takes ownership
    ///@}
    /// The controller shown; null without controllers.
    ViewController *selectedViewController() const;
    /// The index of the controller shown, -1 without controllers; an index out of range is
    /// ignored.
    ///@{
    int selectedIndex() const;
    void setSelectedIndex(int index);
    ///@}

    void viewWillAppear(bool animated) override; ///< passed on to the selected controller
    void viewDidAppear(bool animated) override;  ///< passed on to the selected controller

protected:
    void loadView() override;

private:
    class Private;

    void fillTabs(); // pages and tabs for the controllers, the selected one shown

    const std::unique_ptr<Private> d;
};

} // namespace bvt
