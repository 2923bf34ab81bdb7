#pragma once

#include <Brevanti/platform/PopupNavigationBar.h>
#include <Brevanti/platform/ViewController.h>

#include <QList>
#include <QObject>
#include <QPointer>

namespace bvt {

// A card over a dimmed background, in the middle of the presenting controller's view, with its own
// navigation bar and stack of controllers. The card is sized by the top controller's
// contentSizeInPopup (portrait) or landscapeContentSizeInPopup (landscape main screen), plus the
// bar when it is shown.
class PopupController : public QObject
{
    Q_OBJECT
public:
    explicit PopupController(ViewController *root, QObject *parent = nullptr); // owns root

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
    bool eventFilter(QObject *watched, QEvent *event) override;
    void layoutCard();
    void showTop(bool animated);

    QList<ViewController *> m_controllers;
    QPointer<ViewController> m_presenting;
    QWidget *m_background = nullptr;
    QWidget *m_container = nullptr;
    PopupNavigationBar *m_bar = nullptr;
    QWidget *m_content = nullptr;
    bool m_barHidden = false;
    double m_cornerRadius = 4;
};

} // namespace bvt
