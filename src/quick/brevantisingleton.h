#pragma once

#include <Brevanti/Client.h>

#include <QColor>
#include <QJSValue>
#include <QObject>
#include <QPointer>
#include <QQuickWindow>
#include <QString>
#include <QVariantMap>
#include <QtQml/qqmlregistration.h>

class QJSEngine;
class QQmlEngine;

namespace bvt {
struct CardRequest;
}

namespace bvt::quick {

// The library for QML, as the singleton Brevanti: the calls of BVT and BVTNotify, and the stored
// identifiers as properties that change when the library stores new ones. A call's answer reaches
// QML through its optional callbacks: onSuccess(answer) gets the decoded answer, onFailure(text)
// the failed answer's body (null when none arrived). They run only while this engine's singleton
// lives, so never after the engine is gone. A call the library refuses (a null key or user
// identifier) throws a JavaScript error instead.
// Once made, it also shows the permission card for BVTNotify::requestCustomPreferences in a host
// without Qt Widgets, in its window.
class BrevantiSingleton : public QObject
{
    Q_OBJECT
    QML_NAMED_ELEMENT(Brevanti)
    QML_SINGLETON
    // The library's one client, whose calls return replies; the properties below are its own.
    Q_PROPERTY(bvt::Client *client READ client CONSTANT)
    Q_PROPERTY(QString currentDevice READ currentDevice NOTIFY currentDeviceChanged)
    Q_PROPERTY(QString currentUser READ currentUser NOTIFY currentUserChanged)
    Q_PROPERTY(QString currentDeviceToken READ currentDeviceToken NOTIFY currentDeviceTokenChanged)
    // The permission card's defaults, those of BVTNotify.
    Q_PROPERTY(QColor defaultNotificationColor READ defaultNotificationColor CONSTANT)
    Q_PROPERTY(QString defaultNotificationHeader READ defaultNotificationHeader CONSTANT)
    Q_PROPERTY(QString defaultNotificationSubHeader READ defaultNotificationSubHeader CONSTANT)
    // Where the permission card shows; unset, the application's first Qt Quick window.
    Q_PROPERTY(QQuickWindow *window READ window WRITE setWindow NOTIFY windowChanged)

public:
    explicit BrevantiSingleton(QJSEngine *engine, QObject *parent = nullptr);
    static BrevantiSingleton *create(QQmlEngine *, QJSEngine *engine);

    static Client *client();
    QString currentDevice() const;
    QString currentUser() const;
    QString currentDeviceToken() const;
    static QColor defaultNotificationColor();
    static QString defaultNotificationHeader();
    static QString defaultNotificationSubHeader();
    QQuickWindow *window() const;
    void setWindow(QQuickWindow *window);

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
    Q_INVOKABLE void requestPushPermissions(int delayMs); // later, holding nothing of the caller

    // The permission card, with BVTNotify's defaults for what is not given; a null colour is none.
    // Nothing shows once push was accepted.
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
    void currentDeviceChanged();
    void currentUserChanged();
    void currentDeviceTokenChanged();
    void windowChanged();

private Q_SLOTS:
    void cardEnded(int outcome); // tells the client how a card this singleton showed ended

private:
    template<typename Call>
    void refusable(Call &&call);
    void showCard(const CardRequest &request);

    QPointer<QQuickWindow> m_window;

    QJSEngine *m_engine;
};

// The client and its replies, as QML sees them: made by the library, never by QML.
struct ClientForeign
{
    Q_GADGET
    QML_FOREIGN(bvt::Client)
    QML_NAMED_ELEMENT(Client)
    QML_UNCREATABLE("The library's one client is Brevanti.client.")
};

struct ReplyForeign
{
    Q_GADGET
    QML_FOREIGN(bvt::Reply)
    QML_NAMED_ELEMENT(Reply)
    QML_UNCREATABLE("Replies come from the calls of Brevanti.client.")
};

} // namespace bvt::quick
