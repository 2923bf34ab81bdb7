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

// BVTNotify in QML: the push token, the preferences and the permission card, with callbacks as BVT
// has them. A preference key the library refuses throws a JavaScript error.
class BvtNotifySingleton : public QObject
{
    Q_OBJECT
    QML_NAMED_ELEMENT(BVTNotify)
    QML_SINGLETON
    // The permission card's defaults.
    Q_PROPERTY(QColor defaultNotificationColor READ defaultNotificationColor CONSTANT)
    Q_PROPERTY(QString defaultNotificationHeader READ defaultNotificationHeader CONSTANT)
    Q_PROPERTY(QString defaultNotificationSubHeader READ defaultNotificationSubHeader CONSTANT)
    // Where the permission card shows; unset, the application's first Qt Quick window.
    Q_PROPERTY(QQuickWindow *window READ window WRITE setWindow NOTIFY windowChanged)

public:
    explicit BvtNotifySingleton(QJSEngine *engine, QObject *parent = nullptr);
    static BvtNotifySingleton *create(QQmlEngine *qmlEngine, QJSEngine *engine);

    static QColor defaultNotificationColor();
    static QString defaultNotificationHeader();
    static QString defaultNotificationSubHeader();
    QQuickWindow *window() const;
    void setWindow(QQuickWindow *window);

    Q_INVOKABLE QString stringWithDeviceToken(const QVariant &deviceToken) const;
    Q_INVOKABLE void enableDevice(const QVariant &deviceToken, const QJSValue &onSuccess = {},
                                  const QJSValue &onFailure = {});
    // No callbacks: the library never calls those of these two.
    Q_INVOKABLE void verifyPushEnabled();
    Q_INVOKABLE void requestPushPermissions();
    Q_INVOKABLE void requestPushPermissions(int delayMs); // later, holding nothing of the caller

    // The permission card, with the defaults for what is not given; a null colour is none. Nothing
    // shows once push was accepted.
    Q_INVOKABLE void requestCustomPreferences();
    Q_INVOKABLE void requestCustomPreferencesWithColor(const QVariant &color);
    Q_INVOKABLE void requestCustomPreferencesWithColor(const QVariant &color, const QVariant &icon);
    Q_INVOKABLE void requestCustomPreferencesWithColor(const QVariant &color, const QVariant &icon,
                                                       const QString &header);
    Q_INVOKABLE void requestCustomPreferencesWithColor(const QVariant &color, const QVariant &icon,
                                                       const QString &header,
                                                       const QString &subHeader);

    Q_INVOKABLE void getPreferences(const QJSValue &onSuccess = {}, const QJSValue &onFailure = {});
    Q_INVOKABLE void enablePreferenceWithCategory(const QString &category,
                                                  const QString &preference,
                                                  const QJSValue &onSuccess = {},
                                                  const QJSValue &onFailure = {});
    Q_INVOKABLE void disablePreferenceWithCategory(const QString &category,
                                                   const QString &preference,
                                                   const QJSValue &onSuccess = {},
                                                   const QJSValue &onFailure = {});

Q_SIGNALS:
    void windowChanged();

private:
    QJSEngine *m_engine;
};

} // namespace bvt::quick
