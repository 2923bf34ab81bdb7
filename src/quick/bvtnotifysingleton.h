#pragma once

#include <QColor>
#include <QJSValue>
#include <QObject>
#include <QQuickWindow>
#include <QString>
#include <QtQml/qqmlregistration.h>

class QJSEngine;
class QQmlEngine;

namespace bvt::quick {

/// BVTNotify's calls in QML: the push token, the preferences and the permission card, with
/// callbacks as BVT has them. A null category or preference key throws a JavaScript error.
class BvtNotifySingleton : public QObject
{
    Q_OBJECT
    QML_NAMED_ELEMENT(BVTNotify)
    QML_SINGLETON
    /// The permission card's default tint colour.
    Q_PROPERTY(QColor defaultNotificationColor READ defaultNotificationColor CONSTANT)
    /// The permission card's default header, translated in the context PermissionCard.
    Q_PROPERTY(QString defaultNotificationHeader READ defaultNotificationHeader CONSTANT)
    /// The permission card's default sub-header, translated in the context PermissionCard.
    Q_PROPERTY(QString defaultNotificationSubHeader READ defaultNotificationSubHeader CONSTANT)
    /// Where the permission card shows; unset, the application's first Qt Quick window.
    Q_PROPERTY(QQuickWindow *window READ window WRITE setWindow NOTIFY windowChanged)

public:
    explicit BvtNotifySingleton(QJSEngine *engine, QObject *parent = nullptr);
    static BvtNotifySingleton *create(QQmlEngine *qmlEngine, QJSEngine *engine);

    static QColor defaultNotificationColor();
    static QString defaultNotificationHeader();
    static QString defaultNotificationSubHeader();
    QQuickWindow *window() const;
    void setWindow(QQuickWindow *window);

    /// The push token as the service receives it: text as it stands, anything else (an
    /// ArrayBuffer) as the upper-case hexadecimal of its bytes.
    Q_INVOKABLE QString stringWithDeviceToken(const QVariant &deviceToken) const;
    /// Sends the push token the platform gave to the service; once accepted, it is stored as
    /// BVT.currentDeviceToken.
    Q_INVOKABLE void enableDevice(const QVariant &deviceToken, const QJSValue &onSuccess = {},
                                  const QJSValue &onFailure = {});
    /// Asks for push permission when no push token is stored (and the device is registered).
    Q_INVOKABLE void verifyPushEnabled();
    /// Asks the platform for push permission and a push token, now or after delayMs
    /// milliseconds.
    Q_INVOKABLE void requestPushPermissions();
    Q_INVOKABLE void requestPushPermissions(int delayMs); // later, holding nothing of the caller

    /// Shows the QML permission card in window, with the defaults for what is not given; a null
    /// colour is none. Nothing shows once a push token is stored. The client Brevanti's
    /// cardFinished tells how it ended.
    Q_INVOKABLE void requestCustomPreferences();
    /// The same, with the card's tint colour, icon, header and sub-header.
    Q_INVOKABLE void requestCustomPreferencesWithColor(const QVariant &color);
    Q_INVOKABLE void requestCustomPreferencesWithColor(const QVariant &color, const QVariant &icon);
    Q_INVOKABLE void requestCustomPreferencesWithColor(const QVariant &color, const QVariant &icon,
                                                       const QString &header);
    Q_INVOKABLE void requestCustomPreferencesWithColor(const QVariant &color, const QVariant &icon,
                                                       const QString &header,
                                                       const QString &subHeader);

    /// Fetches the preference document: an array of categories, each with its preferences.
    Q_INVOKABLE void getPreferences(const QJSValue &onSuccess = {}, const QJSValue &onFailure = {});
    /// Switches one preference on, for the user when one is assigned, else for the device.
    Q_INVOKABLE void enablePreferenceWithCategory(const QString &category,
                                                  const QString &preference,
                                                  const QJSValue &onSuccess = {},
                                                  const QJSValue &onFailure = {});
    /// Switches one preference off, as enablePreferenceWithCategory switches it on.
    Q_INVOKABLE void disablePreferenceWithCategory(const QString &category,
                                                   const QString &preference,
                                                   const QJSValue &onSuccess = {},
                                                   const QJSValue &onFailure = {});

Q_SIGNALS:
    /// The window property changed.
    void windowChanged();

private:
    QJSEngine *m_engine;
};

} // namespace bvt::quick
