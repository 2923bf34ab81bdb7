#pragma once

/// \file
/// bvt::Client, the library for a Qt host: its state as properties, each call a bvt::Reply.

#include <Brevanti/Reply.h>
#include <Brevanti/brevanti_core_export.h>

#include <QObject>
#include <QString>
#include <QVariantMap>

#include <memory>

namespace bvt {

class ClientPrivate;

/// The library as a Qt host uses it: the stored identifiers as properties that announce each
/// change, and every service call as a bvt::Reply that always finishes, with an error a host can
/// switch on. Nothing is thrown.
///
/// In QML it is `Brevanti.client`, whose calls return the same replies.
///
/// There is one client, instance(), over the same state as the facade BVT, BVTManager and
/// BVTNotify: a change made through any of them (or through QML) is announced here once, and
/// what the client stores they read.
///
///     bvt::Reply *reply = bvt::Client::instance()->assignDeviceToUser("user-42");
///     reply->then(this, [](bvt::Reply *reply) {
///         if (reply->error() != bvt::Reply::NoError)
///             qWarning() << reply->errorString();
///     });
class BREVANTI_CORE_EXPORT Client : public QObject
{
    Q_OBJECT
    /// The identifier the service gave this device at registration; null until then.
    Q_PROPERTY(QString deviceId READ deviceId NOTIFY deviceIdChanged)
    /// The identifier of the user the device is assigned to; null while it is assigned to none.
    Q_PROPERTY(QString user READ user NOTIFY userChanged)
    /// The push token the service accepted, as upper-case hexadecimal; null while there is none.
    Q_PROPERTY(QString pushToken READ pushToken NOTIFY pushTokenChanged)
    /// Whether initialise() (or BVT::initWithLaunchOptions) was called in this process.
    Q_PROPERTY(bool initialised READ isInitialised NOTIFY initialisedChanged)
    /// Whether the widget screens (the permission card and the preferences screen) take the
    /// host's palette, light or dark, instead of their own colours; false unless set. Their fonts
    /// are the application's either way, and the card's tint is the one it is asked with: a text
    /// on the tint takes whichever of the palette's window and text colours reads better on it.
    /// It applies to the screens shown after it is set. The QML screens always take their style's
    /// colours.
    Q_PROPERTY(bool widgetScreensFollowPalette READ widgetScreensFollowPalette WRITE
                       setWidgetScreensFollowPalette NOTIFY widgetScreensFollowPaletteChanged)

public:
    /// How the permission card ended; see cardFinished().
    enum CardOutcome {
        CardKeptUpdated, ///< Keep Me Updated: the card closed, and push permission is asked for.
        CardCustomized,  ///< Customize Notifications, then Done.
        CardDeclined,    ///< No Thanks.
        CardNotShown,    ///< Not shown: a push token is stored already, or there is no window.
    };
    Q_ENUM(CardOutcome)

    /// The one client, made on first use, a child of the application object. Call it on the main
    /// thread, once the application object exists.
    static Client *instance();
    ~Client() override;

    /// The properties above.
    ///@{
    QString deviceId() const;
    QString user() const;
    QString pushToken() const;
    bool isInitialised() const;
    bool widgetScreensFollowPalette() const;
    void setWidgetScreensFollowPalette(bool follow);
    ///@}

    /// Starts the library with the application's client credentials, and registers the device
    /// unless it is registered already. The reply finishes once the registration has ended, or at
    /// once (with no answer) when the device was registered before.
    Q_INVOKABLE Reply *initialise(const QString &clientId, const QString &clientSecret);

    /// Ties the device to the application's user; on success the user is stored. A null user is
    /// refused.
    Q_INVOKABLE Reply *assignDeviceToUser(const QString &user);
    /// Releases the device from its user; on success the stored user is removed.
    Q_INVOKABLE Reply *unassignDevice();
    /// Sends the push token the platform gave (bytes, or text taken as it stands) to the service;
    /// once the service has accepted it, it is stored as pushToken.
    Q_INVOKABLE Reply *enableDevice(const QVariant &pushToken);
    /// Fetches the preference document: an array of categories, each with its preferences.
    Q_INVOKABLE Reply *fetchPreferences();
    /// Switches one preference on or off, for the user when one is assigned, else for the device.
    /// A null category or preference key is refused.
    Q_INVOKABLE Reply *setPreferenceEnabled(const QString &category, const QString &preference,
                                            bool enabled);

    /// An authenticated request of a path of the service (which begins with "/"). A path that
    /// would lead the request to another host is refused.
    ///@{
    Q_INVOKABLE Reply *get(const QString &path, const QVariantMap &parameters = {});
    Q_INVOKABLE Reply *post(const QString &path, const QVariantMap &parameters = {});
    Q_INVOKABLE Reply *patch(const QString &path, const QVariantMap &parameters = {});
    ///@}

    /// Shows the permission card with its defaults, as BVTNotify::requestCustomPreferences does:
    /// the widget card in a QApplication host that links the Widgets library, else the QML card
    /// once QML's singleton Brevanti has been made, so that a Qt Quick host needs no Qt Widgets.
    /// cardFinished() tells how it ended; CardNotShown at once when a push token is stored already
    /// or neither card can be shown.
    Q_INVOKABLE void requestCustomPreferences();

Q_SIGNALS:
    /// Each is emitted once per change of its property, whichever road made the change.
    ///@{
    void deviceIdChanged();
    void userChanged();
    void pushTokenChanged();
    void initialisedChanged();
    void widgetScreensFollowPaletteChanged();
    ///@}
    /// The permission card that BVTNotify::requestCustomPreferences (or QML's
    /// Brevanti.requestCustomPreferences) asked for ended, in the widget card and the QML card
    /// alike; or it was not shown, which is told at once.
    void cardFinished(bvt::Client::CardOutcome outcome);

private:
    friend class ClientPrivate;

    explicit Client(QObject *parent);

    const std::unique_ptr<ClientPrivate> d;
};

} // namespace bvt
