#pragma once

#include <QJSValue>
#include <QObject>
#include <QString>
#include <QVariantMap>
#include <QtQml/qqmlregistration.h>

class QJSEngine;
class QQmlEngine;

namespace bvt::quick {

/// BVT's calls in QML, and the stored identifiers under BVT's names, which change when the library
/// stores new ones (the client Brevanti's deviceId, user and pushToken). A call's answer reaches
/// QML through its optional callbacks: onSuccess(answer) gets the decoded answer, onFailure(text)
/// the failed answer's body (null when none arrived); they run only while this engine's singleton
/// lives. As with BVT, a call made when no access token can be had calls neither: the client
/// Brevanti's calls, whose replies always finish, tell that too. A user identifier the library
/// refuses throws a JavaScript error.
class BvtSingleton : public QObject
{
    Q_OBJECT
    QML_NAMED_ELEMENT(BVT)
    QML_SINGLETON
    /// The identifier the service gave this device; empty until the device is registered.
    Q_PROPERTY(QString currentDevice READ currentDevice NOTIFY currentDeviceChanged)
    /// The user the device is assigned to; empty while it is assigned to none.
    Q_PROPERTY(QString currentUser READ currentUser NOTIFY currentUserChanged)
    /// The push token the service accepted, as upper-case hexadecimal; empty while there is none.
    Q_PROPERTY(QString currentDeviceToken READ currentDeviceToken NOTIFY currentDeviceTokenChanged)

public:
    explicit BvtSingleton(QJSEngine *engine, QObject *parent = nullptr);
    static BvtSingleton *create(QQmlEngine *qmlEngine, QJSEngine *engine);

    QString currentDevice() const;
    QString currentUser() const;
    QString currentDeviceToken() const;

    /// Starts the library with the application's client credentials (the launch options are
    /// accepted and unused), and registers the device unless it is registered already.
    Q_INVOKABLE void initWithLaunchOptions(const QVariantMap &launchOptions,
                                           const QString &clientId, const QString &clientSecret);

    /// An authenticated GET, POST or PATCH of a path of the service (which begins with "/"); the
    /// parameters go form-encoded into the query (GET) or the body.
    Q_INVOKABLE void getUrl(const QString &path, const QVariantMap &parameters,
                            const QJSValue &onSuccess = {}, const QJSValue &onFailure = {});
    Q_INVOKABLE void postUrl(const QString &path, const QVariantMap &parameters,
                             const QJSValue &onSuccess = {}, const QJSValue &onFailure = {});
    Q_INVOKABLE void patchUrl(const QString &path, const QVariantMap &parameters,
                              const QJSValue &onSuccess = {}, const QJSValue &onFailure = {});

    /// Ties the device to the application's user; once the service accepted, currentUser is that
    /// user. A null user throws.
    Q_INVOKABLE void assignDeviceToUser(const QString &userIdentifier,
                                        const QJSValue &onSuccess = {},
                                        const QJSValue &onFailure = {});
    /// Releases the device from its user; once the service accepted, currentUser is empty.
    Q_INVOKABLE void unassignDevice(const QJSValue &onSuccess = {}, const QJSValue &onFailure = {});
    /// Stores a push token without telling the service (BVTNotify.enableDevice tells it).
    Q_INVOKABLE void setCurrentDeviceToken(const QString &token);

Q_SIGNALS:
    /// Each is emitted once per change of its property.
    void currentDeviceChanged();
    void currentUserChanged();
    void currentDeviceTokenChanged();

private:
    QJSEngine *m_engine;
};

} // namespace bvt::quick
