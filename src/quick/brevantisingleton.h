#pragma once

#include <QJSValue>
#include <QObject>
#include <QString>
#include <QVariantMap>
#include <QtQml/qqmlregistration.h>

class QJSEngine;
class QQmlEngine;

namespace bvt::quick {

// The library for QML, as the singleton Brevanti: the calls of BVT and BVTNotify, and the stored
// identifiers as properties that change when the library stores new ones. A call's answer reaches
// QML through its optional callbacks: onSuccess(answer) gets the decoded answer, onFailure(text)
// the failed answer's body (null when none arrived). They run only while this engine's singleton
// lives, so never after the engine is gone. A call the library refuses (a null key or user
// identifier) throws a JavaScript error instead.
class BrevantiSingleton : public QObject
{
    Q_OBJECT
    QML_NAMED_ELEMENT(Brevanti)
    QML_SINGLETON
    Q_PROPERTY(QString currentDevice READ currentDevice NOTIFY currentDeviceChanged)
    Q_PROPERTY(QString currentUser READ currentUser NOTIFY currentUserChanged)
    Q_PROPERTY(QString currentDeviceToken READ currentDeviceToken NOTIFY currentDeviceTokenChanged)

public:
    explicit BrevantiSingleton(QJSEngine *engine, QObject *parent = nullptr);
    static BrevantiSingleton *create(QQmlEngine *, QJSEngine *engine);

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

    Q_INVOKABLE QString stringWithDeviceToken(const QVariant &deviceToken) const;
    Q_INVOKABLE void enableDevice(const QVariant &deviceToken, const QJSValue &onSuccess = {},
                                  const QJSValue &onFailure = {});
    // No callbacks: the library never calls those of these two.
    Q_INVOKABLE void verifyPushEnabled();
    Q_INVOKABLE void requestPushPermissions();

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
    void currentDeviceChanged();
    void currentUserChanged();
    void currentDeviceTokenChanged();

private:
    // An identifier as last announced to QML, so that a change is announced once and a write of
    // the same value not at all.
    struct Shown
    {
        QString value;
        bool update(const QString &now);
    };

    template<typename Call>
    void refusable(Call &&call);

    QJSEngine *m_engine;
    Shown m_device;
    Shown m_user;
    Shown m_token;
};

} // namespace bvt::quick
