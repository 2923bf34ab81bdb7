#pragma once

#include <Brevanti/brevanti_widgets_export.h>

/// \file
/// bvt::ViewController, one screen of the platform layer.
///
/// Who owns what in the platform layer:
/// - A controller owns its view: the view is deleted with the controller, wherever it is parented.
///   Containers only parent views into their own widgets; when such a widget goes first (a window
///   closed under a popup), the views in it go too and their controllers forget them.
/// - A container (NavigationController, PopupController, TabBarController, Window) owns the
///   controllers put into it, as their QObject parent, until it gives them back: a pop returns the
///   controller to the caller with its view unparented.
/// - A presented controller is owned by its presenter until dismissed, then deletes itself.
/// - A PopupController belongs to the QObject parent its maker gave it (the library gives the
///   presenting controller) until dismiss() deletes it. Presenting moves only its card and
///   background into the presenting window, so it outlives a window closed under it.

#include <Brevanti/platform/NavigationItem.h>
#include <Brevanti/platform/Screen.h>

#include <QObject>
#include <QPointer>
#include <QSize>
#include <QString>

#include <memory>

class QAction;
class QWidget;

namespace bvt {

class NavigationController;
class PopupController;

/// One screen: a lazily created view (a QWidget), a title, a navigation item and the appearance
/// hooks its container calls. Who owns what is told in ViewController.h.
class BREVANTI_WIDGETS_EXPORT ViewController : public QObject
{
    Q_OBJECT
public:
    /// A controller whose view is not made yet.
    explicit ViewController(QObject *parent = nullptr);
    /// Takes the view with it, wherever it is parented.
    ~ViewController() override;

    /// The view, created by loadView and then viewDidLoad on first use.
    QWidget *view();
    /// Whether the view has been made (and is still there).
    bool isViewLoaded() const;

    /// The title a navigation bar shows for this controller.
    QString title() const;
    void setTitle(const QString &title); ///< also the navigation item's title
    /// What a navigation bar shows for this controller: its title and right-hand button.
    NavigationItem &navigationItem();

    /// The container whose stack holds this controller, if any.
    ///@{
    NavigationController *navigationController() const;
    PopupController *popupController() const;
    ///@}
    /// The controller presented over this one; null when none is.
    ViewController *presentedViewController() const;
    /// The controller this one is presented over; null when it is not presented.
    ViewController *presentingViewController() const;

    /// Presents a controller over this one, full-window (QObject ownership passes to this one).
    void presentViewController(ViewController *controller, bool animated);
    /// Dismisses the controller presented over this one, which then deletes itself; called on the
    /// presented controller, it asks its presenter to.
    void dismissViewController(bool animated);

    /// Card sizes when shown in a PopupController; empty when not set.
    ///@{
    QSize contentSizeInPopup() const;
    void setContentSizeInPopup(const QSize &size);
    QSize landscapeContentSizeInPopup() const;
    void setLandscapeContentSizeInPopup(const QSize &size);
    ///@}

    /// Called by the containers around the moment the view comes on screen.
    ///@{
    virtual void viewWillAppear(bool animated);
    virtual void viewDidAppear(bool animated);
    ///@}

    /// Called after the view turned between portrait and landscape (its size's orientation
    /// changed).
    virtual void didRotateFromInterfaceOrientation(InterfaceOrientation from);

Q_SIGNALS:
    /// The title changed (setTitle); the bar showing this controller follows.
    void titleChanged(const QString &title);

protected:
    virtual void loadView(); // makes a plain QWidget
    virtual void viewDidLoad();
    void setView(QWidget *view); // for loadView overrides

private:
    class Private;

    bool eventFilter(QObject *watched, QEvent *event) override;

    const std::unique_ptr<Private> d;
};

} // namespace bvt
