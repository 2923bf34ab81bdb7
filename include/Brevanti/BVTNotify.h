#pragma once

/// \file
/// BVTNotify: push permission, the device token, the user's notification preferences and the
/// library's screens.

#include <Brevanti/BVTTypes.h>
#include <Brevanti/brevanti_core_export.h>

#include <QString>
#include <QVariant>

// Named only by the screens' functions, so that a host of the service alone needs no Qt Gui
// headers. The screens they show come from the Widgets component (in a QApplication) or the Quick
// one.
class QColor;
class QPixmap;

namespace bvt {
class NavigationController;
class ViewController;
} // namespace bvt

/// Push permission, the device token, and the user's notification preferences. Every operation
/// that talks to the service first needs the device identifier; while none is known it only writes
/// "You have not fired initWithLaunchOptions yet!" to the log.
class BVTNotify
{
public:
    BVTNotify() = delete;

    /// The token as the service receives it: a QString comes back unchanged; anything else (the
    /// QByteArray the operating system delivers, usually) is read as bytes and written as
    /// upper-case hexadecimal, two digits a byte. An invalid QVariant gives "".
    BREVANTI_CORE_EXPORT static QString stringWithDeviceToken(const QVariant &deviceToken);

    /// Registers the token with the service for this device; once the service accepts it, it is
    /// stored (BVT::currentDeviceToken) and then success is called.
    ///@{
    BREVANTI_CORE_EXPORT static void enableDevice(const QVariant &deviceToken);
    BREVANTI_CORE_EXPORT static void enableDevice(const QVariant &deviceToken,
                                                  const BVTSuccessBlock &success);
    BREVANTI_CORE_EXPORT static void enableDevice(const QVariant &deviceToken,
                                                  const BVTSuccessBlock &success,
                                                  const BVTFailureBlock &failure);
    ///@}

    /// With a stored token only logs it; without one asks for push permission. Sends nothing, and
    /// the callbacks are never called.
    ///@{
    BREVANTI_CORE_EXPORT static void verifyPushEnabled();
    BREVANTI_CORE_EXPORT static void verifyPushEnabled(const BVTSuccessBlock &success);
    BREVANTI_CORE_EXPORT static void verifyPushEnabled(const BVTSuccessBlock &success,
                                                       const BVTFailureBlock &failure);
    ///@}

    /// Asks the operating system (through bvt::Application) for badge, sound and alert permission
    /// and for a device token.
    BREVANTI_CORE_EXPORT static void requestPushPermissions();

    /// The preference document: an array of categories {"name", "key", "preferences": [{"name",
    /// "key", "enabled"}]}, handed to success as decoded.
    ///@{
    BREVANTI_CORE_EXPORT static void getPreferences(const BVTSuccessBlock &success);
    BREVANTI_CORE_EXPORT static void getPreferences(const BVTSuccessBlock &success,
                                                    const BVTFailureBlock &failure);
    ///@}

    /// Switch one preference for the user when one is assigned, else for the device; each is
    /// followed at once by verifyPushEnabled. A null key throws std::invalid_argument before
    /// anything is sent.
    ///@{
    BREVANTI_CORE_EXPORT static void enablePreferenceWithCategory(const QString &category,
                                                                  const QString &preference);
    BREVANTI_CORE_EXPORT static void enablePreferenceWithCategory(const QString &category,
                                                                  const QString &preference,
                                                                  const BVTSuccessBlock &success);
    BREVANTI_CORE_EXPORT static void enablePreferenceWithCategory(const QString &category,
                                                                  const QString &preference,
                                                                  const BVTSuccessBlock &success,
                                                                  const BVTFailureBlock &failure);
    BREVANTI_CORE_EXPORT static void disablePreferenceWithCategory(const QString &category,
                                                                   const QString &preference);
    BREVANTI_CORE_EXPORT static void disablePreferenceWithCategory(const QString &category,
                                                                   const QString &preference,
                                                                   const BVTSuccessBlock &success);
    BREVANTI_CORE_EXPORT static void disablePreferenceWithCategory(const QString &category,
                                                                   const QString &preference,
                                                                   const BVTSuccessBlock &success,
                                                                   const BVTFailureBlock &failure);
    ///@}

    /// Shows the permission popup in the top controller, unless a device token is stored already
    /// ("You have already accepted push notifications!"). The shorter forms take the defaults for
    /// what they lack; a value given explicitly is used as it is, also when it is nil (an invalid
    /// QColor, a null QPixmap or a null QString), which shows as empty.
    ///@{
    BREVANTI_CORE_EXPORT static void requestCustomPreferences();
    BREVANTI_CORE_EXPORT static void requestCustomPreferencesWithColor(const QColor &color);
    BREVANTI_CORE_EXPORT static void requestCustomPreferencesWithColor(const QColor &color,
                                                                       const QPixmap &icon);
    BREVANTI_CORE_EXPORT static void requestCustomPreferencesWithColor(const QColor &color,
                                                                       const QPixmap &icon,
                                                                       const QString &header);
    BREVANTI_CORE_EXPORT static void requestCustomPreferencesWithColor(const QColor &color,
                                                                       const QPixmap &icon,
                                                                       const QString &header,
                                                                       const QString &subHeader);
    ///@}

    /// The card's colour unless the host gives one: (0.23, 0.36, 0.59, 1.0).
    BREVANTI_CORE_EXPORT static QColor defaultNotificationColor();
    /// "bvt-alert-icon-default.png" from the host's resources (":/"), else beside the executable;
    /// a null pixmap when the host carries none.
    BREVANTI_CORE_EXPORT static QPixmap defaultNotificationIcon();
    /// The card's header unless the host gives one: "Stay Up To Date", through the host's
    /// translators (context PermissionCard) each time it is asked for.
    BREVANTI_CORE_EXPORT static QString defaultNotificationHeader();
    /// The card's sub-header unless the host gives one, translated as the header is.
    BREVANTI_CORE_EXPORT static QString defaultNotificationSubHeader();

    /// Pushes a full-screen preferences screen onto the host's navigation stack, animated. Needs a
    /// QApplication and the Widgets component; without them it writes "The library's screens need a
    /// QApplication (Qt Widgets); nothing is shown" to the brevanti.ui category.
    BREVANTI_CORE_EXPORT static void
    openPreferencesWithNavigationController(bvt::NavigationController *navigation);

    /// The controller on top of the key window's hierarchy (or of the given controller's): down
    /// navigation stacks and selected tabs; null without the Widgets component. Beware: a plain
    /// controller that presents another one makes the walk recurse without end, as it always has.
    ///@{
    BREVANTI_CORE_EXPORT static bvt::ViewController *topViewController();
    BREVANTI_CORE_EXPORT static bvt::ViewController *
    topViewController(bvt::ViewController *controller);
    ///@}
};
