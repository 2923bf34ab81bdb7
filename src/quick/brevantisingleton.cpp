#include "brevantisingleton.h"

#include "core/log.h"
#include "core/logging.h"
#include "core/screens.h"
#include "jscallback.h"
#include "notify/carddefaults.h"

#include <Brevanti/BVT.h>
#include <Brevanti/BVTNotify.h>

#include <QColor>
#include <QGuiApplication>
#include <QJSEngine>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickItem>
#include <QTimer>

#include <stdexcept>

namespace bvt::quick {

// An exception must not cross the QML engine; the caller gets it as a JavaScript error.
template<typename Call>
void BrevantiSingleton::refusable(Call &&call)
{
    try {
        call();
    } catch (const std::invalid_argument &error) {
        m_engine->throwError(QString::fromUtf8(error.what()));
    }
}

BrevantiSingleton::BrevantiSingleton(QJSEngine *engine, QObject *parent)
    : QObject(parent), m_engine(engine)
{
    // The client holds the state and announces its changes; these are its own under their
    // described names.
    Client *client = Client::instance();
    connect(client, &Client::deviceIdChanged, this, &BrevantiSingleton::currentDeviceChanged);
    connect(client, &Client::userChanged, this, &BrevantiSingleton::currentUserChanged);
    connect(client, &Client::pushTokenChanged, this, &BrevantiSingleton::currentDeviceTokenChanged);
    installCardPresenter(this, [this](const CardRequest &request) { showCard(request); });
}

BrevantiSingleton *BrevantiSingleton::create(QQmlEngine *, QJSEngine *engine)
{
    return new BrevantiSingleton(engine);
}

Client *BrevantiSingleton::client()
{
    return Client::instance();
}

QString BrevantiSingleton::currentDevice() const
{
    return BVT::currentDevice();
}

QString BrevantiSingleton::currentUser() const
{
    return BVT::currentUser();
}

QString BrevantiSingleton::currentDeviceToken() const
{
    return BVT::currentDeviceToken();
}

void BrevantiSingleton::initWithLaunchOptions(const QVariantMap &launchOptions,
                                              const QString &clientId, const QString &clientSecret)
{
    BVT::initWithLaunchOptions(launchOptions, clientId, clientSecret);
}

void BrevantiSingleton::getUrl(const QString &path, const QVariantMap &parameters,
                               const QJSValue &onSuccess, const QJSValue &onFailure)
{
    BVT::getUrl(path, parameters, successCallback(this, m_engine, onSuccess),
                failureCallback(this, m_engine, onFailure));
}

void BrevantiSingleton::postUrl(const QString &path, const QVariantMap &parameters,
                                const QJSValue &onSuccess, const QJSValue &onFailure)
{
    BVT::postUrl(path, parameters, successCallback(this, m_engine, onSuccess),
                 failureCallback(this, m_engine, onFailure));
}

void BrevantiSingleton::patchUrl(const QString &path, const QVariantMap &parameters,
                                 const QJSValue &onSuccess, const QJSValue &onFailure)
{
    BVT::patchUrl(path, parameters, successCallback(this, m_engine, onSuccess),
                  failureCallback(this, m_engine, onFailure));
}

void BrevantiSingleton::assignDeviceToUser(const QString &userIdentifier, const QJSValue &onSuccess,
                                           const QJSValue &onFailure)
{
    refusable([&] {
        BVT::assignDeviceToUser(userIdentifier, successCallback(this, m_engine, onSuccess),
                                failureCallback(this, m_engine, onFailure));
    });
}

void BrevantiSingleton::unassignDevice(const QJSValue &onSuccess, const QJSValue &onFailure)
{
    BVT::unassignDevice(successCallback(this, m_engine, onSuccess),
                        failureCallback(this, m_engine, onFailure));
}

void BrevantiSingleton::setCurrentDeviceToken(const QString &token)
{
    BVT::setCurrentDeviceToken(token);
}

QString BrevantiSingleton::stringWithDeviceToken(const QVariant &deviceToken) const
{
    return BVTNotify::stringWithDeviceToken(deviceToken);
}

void BrevantiSingleton::enableDevice(const QVariant &deviceToken, const QJSValue &onSuccess,
                                     const QJSValue &onFailure)
{
    BVTNotify::enableDevice(deviceToken, successCallback(this, m_engine, onSuccess),
                            failureCallback(this, m_engine, onFailure));
}

void BrevantiSingleton::verifyPushEnabled()
{
    BVTNotify::verifyPushEnabled();
}

void BrevantiSingleton::requestPushPermissions()
{
    BVTNotify::requestPushPermissions();
}

void BrevantiSingleton::requestPushPermissions(int delayMs)
{
    QTimer::singleShot(delayMs, [] { BVTNotify::requestPushPermissions(); });
}

QColor BrevantiSingleton::defaultNotificationColor()
{
    using namespace carddefaults;
    return QColor::fromRgbF(red, green, blue, 1.0f);
}

QString BrevantiSingleton::defaultNotificationHeader()
{
    return carddefaults::header();
}

QString BrevantiSingleton::defaultNotificationSubHeader()
{
    return carddefaults::subHeader();
}

QQuickWindow *BrevantiSingleton::window() const
{
    return m_window;
}

void BrevantiSingleton::setWindow(QQuickWindow *window)
{
    if (m_window == window)
        return;
    m_window = window;
    Q_EMIT windowChanged();
}

void BrevantiSingleton::requestCustomPreferences()
{
    requestCustomPreferencesWithColor(defaultNotificationColor());
}

void BrevantiSingleton::requestCustomPreferencesWithColor(const QVariant &color)
{
    // The card draws its mark in the colour, as the widget card does; an icon is only passed on.
    requestCustomPreferencesWithColor(color, QVariant());
}

void BrevantiSingleton::requestCustomPreferencesWithColor(const QVariant &color,
                                                          const QVariant &icon)
{
    requestCustomPreferencesWithColor(color, icon, defaultNotificationHeader());
}

void BrevantiSingleton::requestCustomPreferencesWithColor(const QVariant &color,
                                                          const QVariant &icon,
                                                          const QString &header)
{
    requestCustomPreferencesWithColor(color, icon, header, defaultNotificationSubHeader());
}

void BrevantiSingleton::requestCustomPreferencesWithColor(const QVariant &color,
                                                          const QVariant &icon,
                                                          const QString &header,
                                                          const QString &subHeader)
{
    // The same rule as the C++ call: a stored token means push was accepted already.
    if (!BVT::currentDeviceToken().isNull()) {
        log("You have already accepted push notifications!");
        Q_EMIT Client::instance()->cardFinished(Client::CardNotShown);
        return;
    }
    showCard({color, icon, header, subHeader});
}

void BrevantiSingleton::showCard(const CardRequest &request)
{
    QQuickWindow *shownIn = m_window;
    const QWindowList windows = QGuiApplication::topLevelWindows();
    for (auto window = windows.cbegin(); !shownIn && window != windows.cend(); ++window)
        shownIn = qobject_cast<QQuickWindow *>(*window);
    auto *engine = qobject_cast<QQmlEngine *>(m_engine);
    if (!shownIn || !engine) {
        qCWarning(lcQuick, "No Qt Quick window to show the permission card in; nothing is shown");
        Q_EMIT Client::instance()->cardFinished(Client::CardNotShown);
        return;
    }
    QQmlComponent component(
            engine,
            QUrl(QStringLiteral("qrc:/qt-project.org/imports/Brevanti/PermissionCard.qml")));
    if (component.isError()) {
        qCWarning(lcQuick).noquote() << component.errorString();
        return;
    }
    // A colour QML gave as a name is made a colour here; null stays none.
    const QColor color = request.color.isNull() ? QColor() : request.color.value<QColor>();
    QObject *card = component.createWithInitialProperties(
            {{QStringLiteral("parent"), QVariant::fromValue(shownIn->contentItem())},
             {QStringLiteral("color"), color},
             {QStringLiteral("icon"), request.icon},
             {QStringLiteral("header"), request.header},
             {QStringLiteral("subHeader"), request.subHeader}});
    if (!card) {
        qCWarning(lcQuick).noquote() << component.errorString();
        return;
    }
    card->setObjectName(QStringLiteral("brevantiPermissionCard"));
    card->setParent(shownIn); // goes with its window at the latest
    connect(card, SIGNAL(closed()), card, SLOT(deleteLater()));
    connect(card, SIGNAL(ended(int)), this, SLOT(cardEnded(int)));
    QMetaObject::invokeMethod(card, "open");
}

void BrevantiSingleton::cardEnded(int outcome)
{
    Q_EMIT Client::instance()->cardFinished(Client::CardOutcome(outcome));
}

void BrevantiSingleton::getPreferences(const QJSValue &onSuccess, const QJSValue &onFailure)
{
    BVTNotify::getPreferences(successCallback(this, m_engine, onSuccess),
                              failureCallback(this, m_engine, onFailure));
}

void BrevantiSingleton::enablePreferenceWithCategory(const QString &category,
                                                     const QString &preference,
                                                     const QJSValue &onSuccess,
                                                     const QJSValue &onFailure)
{
    refusable([&] {
        BVTNotify::enablePreferenceWithCategory(category, preference,
                                                successCallback(this, m_engine, onSuccess),
                                                failureCallback(this, m_engine, onFailure));
    });
}

void BrevantiSingleton::disablePreferenceWithCategory(const QString &category,
                                                      const QString &preference,
                                                      const QJSValue &onSuccess,
                                                      const QJSValue &onFailure)
{
    refusable([&] {
        BVTNotify::disablePreferenceWithCategory(category, preference,
                                                 successCallback(this, m_engine, onSuccess),
                                                 failureCallback(this, m_engine, onFailure));
    });
}

} // namespace bvt::quick
