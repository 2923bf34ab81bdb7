#pragma once

/// \file
/// bvt::NavigationController, a stack of controllers under a navigation bar.

#include <Brevanti/brevanti_widgets_export.h>

#include <Brevanti/platform/NavigationBar.h>
#include <Brevanti/platform/ViewController.h>

#include <QList>

#include <memory>

class QStackedWidget;

namespace bvt {

/// A stack of controllers under a navigation bar; the top one's view fills the rest.
class BREVANTI_WIDGETS_EXPORT NavigationController : public ViewController
{
    Q_OBJECT
public:
    /// Without a root the stack starts empty; the first controller pushed then is its root.
    explicit NavigationController(ViewController *root, QObject *parent = nullptr);
    /// Takes the controllers still on the stack with it.
    ~NavigationController() override;

    /// The stack, root first.
    QList<ViewController *> viewControllers() const;
    /// The controller shown; null while the stack is empty.
    ViewController *topViewController() const;
    /// The bar, which names the top controller; asking for it loads the view.
    NavigationBar *navigationBar();

    /// Puts the controller on top and shows it, taking ownership.
    void pushViewController(ViewController *controller, bool animated);
    /// The one popped, now owned by the caller; never the root, so null below two controllers.
    ViewController *popViewControllerAnimated(bool animated);
    /// Pops the top controller, as the bar's back button, Escape and the phone's back key do while
    /// more than one is on the stack, and deletes it later.
    void goBack();

    void viewWillAppear(bool animated) override; ///< passed on to the top controller
    void viewDidAppear(bool animated) override;  ///< passed on to the top controller

protected:
    void loadView() override;

private:
    class Private;

    void showTop(bool animated);

    const std::unique_ptr<Private> d;
};

} // namespace bvt
