#pragma once

#include <QJSValue>
#include <QObject>
#include <QString>
#include <QVariantMap>
#include <QtQml/qqmlregistration.h>

class QJSEngine;
class QQmlEngine;

namespace bvt::quick {

// BVT in QML: the described calls of BVT, and the stored identifiers under their described names,
// which change when the library stores new ones (the client Brevanti's deviceId, user and
// pushToken). A call's answer reaches QML through its optional callbacks: onSuccess(answer) gets
// the decoded answer, onFailure(text) the failed answer's body (null when none arrived); they run
// only while this engine's singleton lives. A user identifier the library refuses throws a
// JavaScript error.
class BvtSingleton : public QObject
{
    Q_OBJECT
    QML_NAMED_ELEMENT(BVT)
    QML_SINGLETON
    Q_PROPERTY(QString currentDevice READ currentDevice NOTIFY currentDeviceChanged)
    Q_PROPERTY(QString currentUser READ currentUser NOTIFY currentUserChanged)
    Q_PROPERTY(QString currentDeviceToken READ currentDeviceToken NOTIFY currentDeviceTokenChanged)

public:
    explicit BvtSingleton(QJSEngine *engine, QObject *parent = nullptr);
    static BvtSingleton *create(QQmlEngine *qmlEngine, QJSEngine *engine);

    QString currentDevice() const;
    QString currentUser() const;
    QString currentDeviceToken() const;

    Q_INVOKABLE void initWithLaunchOptions(const QVariantMap &launchOptions,
                                           const QString &clientId, const QString &clientSecret);

    Q_INVOKABLE void getUrl(const QString &path, const QVariantMap &parameters,
                            const QJSValue &onSuccess = {}, const QJSValue &onFailure = {});
    Q_INVOKABLE void postUrl(const QString &path, const QVariantMap &parameters,
                             const QJSValue &onSuccess = {}, const QJSValue &onFailure = {});
    Q_INVOKABLE void patchUrl(const QString &path, const QVariantMap &parameters,
                              const QJSValue &onSuccess = {}, const QJSValue &onFailure = {});

    Q_INVOKABLE void assignDeviceToUser(const QString &userIdentifier,
                                        const QJSValue &onSuccess = {},
                                        const QJSValue &onFailure = {});
    Q_INVOKABLE void unassignDevice(const QJSValue &onSuccess = {}, const QJSValue &onFailure = {});
    Q_INVOKABLE void setCurrentDeviceToken(const QString &token);

Q_SIGNALS:
    void currentDeviceChanged();
    void currentUserChanged();
    void currentDeviceTokenChanged();

private:
    QJSEngine *m_engine;
};

} // namespace bvt::quick
