#include "bvtnotifysingleton.h"

#include "client/clientprivate.h"
#include "core/screens.h"
#include "jscallback.h"
#include "quickcard.h"

#include <Brevanti/BVTNotify.h>
#include <Brevanti/Client.h>

#include <QJSEngine>
#include <QQmlEngine>
#include <QTimer>

namespace bvt::quick {

BvtNotifySingleton::BvtNotifySingleton(QJSEngine *engine, QObject *parent)
    : QObject(parent), m_engine(engine)
{ }

BvtNotifySingleton *BvtNotifySingleton::create(QQmlEngine *qmlEngine, QJSEngine *engine)
{
    installQuickCard(qmlEngine);
    return new BvtNotifySingleton(engine);
}

QColor BvtNotifySingleton::defaultNotificationColor()
{
    return BVTNotify::defaultNotificationColor();
}

QString BvtNotifySingleton::defaultNotificationHeader()
{
    return BVTNotify::defaultNotificationHeader();
}

QString BvtNotifySingleton::defaultNotificationSubHeader()
{
    return BVTNotify::defaultNotificationSubHeader();
}

QQuickWindow *BvtNotifySingleton::window() const
{
    return cardWindow();
}

void BvtNotifySingleton::setWindow(QQuickWindow *window)
{
    if (cardWindow() == window)
        return;
    cardWindow() = window;
    Q_EMIT windowChanged();
}

QString BvtNotifySingleton::stringWithDeviceToken(const QVariant &deviceToken) const
{
    return BVTNotify::stringWithDeviceToken(deviceToken);
}

void BvtNotifySingleton::enableDevice(const QVariant &deviceToken, const QJSValue &onSuccess,
                                      const QJSValue &onFailure)
{
    BVTNotify::enableDevice(deviceToken, successCallback(this, m_engine, onSuccess),
                            failureCallback(this, m_engine, onFailure));
}

void BvtNotifySingleton::verifyPushEnabled()
{
    BVTNotify::verifyPushEnabled();
}

void BvtNotifySingleton::requestPushPermissions()
{
    BVTNotify::requestPushPermissions();
}

void BvtNotifySingleton::requestPushPermissions(int delayMs)
{
    QTimer::singleShot(delayMs, [] { BVTNotify::requestPushPermissions(); });
}

void BvtNotifySingleton::requestCustomPreferences()
{
    requestCustomPreferencesWithColor(defaultNotificationColor());
}

void BvtNotifySingleton::requestCustomPreferencesWithColor(const QVariant &color)
{
    // The card draws its mark in the colour, as the widget card does; an icon is only passed on.
    requestCustomPreferencesWithColor(color, QVariant());
}

void BvtNotifySingleton::requestCustomPreferencesWithColor(const QVariant &color,
                                                           const QVariant &icon)
{
    requestCustomPreferencesWithColor(color, icon, defaultNotificationHeader());
}

void BvtNotifySingleton::requestCustomPreferencesWithColor(const QVariant &color,
                                                           const QVariant &icon,
                                                           const QString &header)
{
    requestCustomPreferencesWithColor(color, icon, header, defaultNotificationSubHeader());
}

void BvtNotifySingleton::requestCustomPreferencesWithColor(const QVariant &color,
                                                           const QVariant &icon,
                                                           const QString &header,
                                                           const QString &subHeader)
{
    // Always the QML card, also in a host that has the widget screens.
    if (permissionCardWanted())
        showCard(qobject_cast<QQmlEngine *>(m_engine), {color, icon, header, subHeader});
}

void BvtNotifySingleton::getPreferences(const QJSValue &onSuccess, const QJSValue &onFailure)
{
    BVTNotify::getPreferences(successCallback(this, m_engine, onSuccess),
                              failureCallback(this, m_engine, onFailure));
}

void BvtNotifySingleton::enablePreferenceWithCategory(const QString &category,
                                                      const QString &preference,
                                                      const QJSValue &onSuccess,
                                                      const QJSValue &onFailure)
{
    refusable(m_engine, [&] {
        BVTNotify::enablePreferenceWithCategory(category, preference,
                                                successCallback(this, m_engine, onSuccess),
                                                failureCallback(this, m_engine, onFailure));
    });
}

void BvtNotifySingleton::disablePreferenceWithCategory(const QString &category,
                                                       const QString &preference,
                                                       const QJSValue &onSuccess,
                                                       const QJSValue &onFailure)
{
    refusable(m_engine, [&] {
        BVTNotify::disablePreferenceWithCategory(category, preference,
                                                 successCallback(this, m_engine, onSuccess),
                                                 failureCallback(this, m_engine, onFailure));
    });
}

} // namespace bvt::quick
