#pragma once

#include <Brevanti/platform/NavigationItem.h>
#include <Brevanti/platform/Screen.h>

#include <QObject>
#include <QPointer>
#include <QSize>
#include <QString>

class QAction;
class QWidget;

namespace bvt {

class NavigationController;
class PopupController;

// One screen: a lazily created view (a QWidget), a title, a navigation item and the appearance
// hooks its container calls. Containers (NavigationController, PopupController, Window) take
// ownership of the controllers put in them (QObject parent).
class ViewController : public QObject
{
    Q_OBJECT
public:
    explicit ViewController(QObject *parent = nullptr);
    ~ViewController() override;

    // The view, created by loadView and then viewDidLoad on first use.
    QWidget *view();
    bool isViewLoaded() const;

    QString title() const;
    void setTitle(const QString &title); // also the navigation item's title
    NavigationItem &navigationItem();

    // Set by the containers.
    NavigationController *navigationController() const;
    PopupController *popupController() const;
    ViewController *presentedViewController() const;
    ViewController *presentingViewController() const;

    // Presents a controller over this one, full-window (QObject ownership passes to this one).
    void presentViewController(ViewController *controller, bool animated);
    void dismissViewController(bool animated);

    // Card sizes when shown in a PopupController; empty when not set.
    QSize contentSizeInPopup() const;
    void setContentSizeInPopup(const QSize &size);
    QSize landscapeContentSizeInPopup() const;
    void setLandscapeContentSizeInPopup(const QSize &size);

    // Called by the containers around the moment the view comes on screen.
    virtual void viewWillAppear(bool animated);
    virtual void viewDidAppear(bool animated);

    // Called after the view turned between portrait and landscape (its size's orientation changed).
    virtual void didRotateFromInterfaceOrientation(InterfaceOrientation from);

Q_SIGNALS:
    void titleChanged(const QString &title);

protected:
    virtual void loadView(); // makes a plain QWidget
    virtual void viewDidLoad();
    void setView(QWidget *view); // for loadView overrides

private:
    friend class NavigationController;
    friend class PopupController;
    bool eventFilter(QObject *watched, QEvent *event) override;

    QWidget *m_view = nullptr;
    NavigationItem m_navigationItem;
    QPointer<NavigationController> m_navigationController;
    QPointer<PopupController> m_popupController;
    QPointer<ViewController> m_presented;
    QPointer<ViewController> m_presenting;
    QSize m_contentSizeInPopup;
    QSize m_landscapeContentSizeInPopup;
};

} // namespace bvt
