#pragma once

#include <Brevanti/brevanti_widgets_export.h>

#include <Brevanti/platform/PopupNavigationBar.h>
#include <Brevanti/platform/ViewController.h>

#include <QList>
#include <QObject>
#include <QPointer>

#include <memory>

namespace bvt {

// A card over a dimmed background, in the middle of the presenting controller's view, with its own
// navigation bar and stack of controllers. The card is sized by the top controller's
// contentSizeInPopup (portrait) or landscapeContentSizeInPopup (landscape main screen), plus the
// bar when it is shown.
class BREVANTI_WIDGETS_EXPORT PopupController : public QObject
{
    Q_OBJECT
public:
    explicit PopupController(ViewController *root, QObject *parent = nullptr); // owns root
    ~PopupController() override; // takes the card and background with it, if still there

    QList<ViewController *> viewControllers() const;
    ViewController *topViewController() const;
    void pushViewController(ViewController *controller, bool animated); // takes ownership

    void presentInViewController(ViewController *presenting);
    void dismiss(); // hides and releases the card; the controller deletes itself later
    bool isPresented() const;

    void setNavigationBarHidden(bool hidden, bool animated);
    bool isNavigationBarHidden() const;

    QWidget *backgroundView() const; // covers the presenting view; black at alpha 0.5 by default
    void setBackgroundView(QWidget *view);                    // before presenting; takes ownership
    ViewController *popViewControllerAnimated(bool animated); // nullptr for the root; caller owns
    QWidget *containerView() const;                           // the card
    PopupNavigationBar *navigationBar() const;
    double cornerRadius() const;
    void setCornerRadius(double radius);

Q_SIGNALS:
    void dismissed();

private:
    class Private;

    bool eventFilter(QObject *watched, QEvent *event) override;
    void layoutCard();
    void showTop(bool animated);

    const std::unique_ptr<Private> d;
};

} // namespace bvt
