#pragma once

/// \file
/// bvt::PopupController, a card over a dimmed background.

#include <Brevanti/brevanti_widgets_export.h>

#include <Brevanti/platform/PopupNavigationBar.h>
#include <Brevanti/platform/ViewController.h>

#include <QColor>
#include <QList>
#include <QObject>
#include <QPointer>

#include <memory>

namespace bvt {

/// A card over a dimmed background, in the middle of the presenting controller's view, with its own
/// navigation bar and stack of controllers. The card is sized by the top controller's
/// contentSizeInPopup (portrait) or landscapeContentSizeInPopup (landscape main screen), plus the
/// bar when it is shown.
class BREVANTI_WIDGETS_EXPORT PopupController : public QObject
{
    Q_OBJECT
public:
    explicit PopupController(ViewController *root, QObject *parent = nullptr); ///< owns root
    ~PopupController() override; ///< takes the card and background with it, if still there

    /// The card's stack, root first.
    QList<ViewController *> viewControllers() const;
    /// The controller shown in the card.
    ViewController *topViewController() const;
    void pushViewController(ViewController *controller, bool animated); ///< takes ownership

    /// Shows the background and the card in the presenting controller's window; once only.
    void presentInViewController(ViewController *presenting);
    void dismiss(); ///< hides and releases the card; the controller deletes itself later
    /// Whether the card is on screen.
    bool isPresented() const;

    /// Hides or shows the card's navigation bar; the card shrinks or grows by its height.
    ///@{
    void setNavigationBarHidden(bool hidden, bool animated);
    bool isNavigationBarHidden() const;
    ///@}

    QWidget *backgroundView() const; ///< covers the presenting view; black at alpha 0.5 by default
    /// Before presenting; takes ownership.
    void setBackgroundView(QWidget *view);
    ViewController *popViewControllerAnimated(bool animated); ///< nullptr for the root; caller owns
    QWidget *containerView() const;                           ///< the card
    /// The card's bar, made when presented (null before), in PopupNavigationBar::appearance().
    PopupNavigationBar *navigationBar() const;
    /// The card's colour behind its content; white by default.
    ///@{
    QColor cardColor() const;
    void setCardColor(const QColor &color);
    ///@}
    /// The radius of the card's corners, 4 by default.
    ///@{
    double cornerRadius() const;
    void setCornerRadius(double radius);
    ///@}

Q_SIGNALS:
    /// The card left the screen through dismiss().
    void dismissed();

private:
    class Private;

    bool eventFilter(QObject *watched, QEvent *event) override;

    const std::unique_ptr<Private> d;
};

} // namespace bvt
