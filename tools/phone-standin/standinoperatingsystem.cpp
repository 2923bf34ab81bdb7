#include "standinoperatingsystem.h"

#include <QRandomGenerator>
#include <QTimer>

namespace bvtstandin {

StandInOperatingSystem::StandInOperatingSystem(QObject *parent) : QObject(parent) { }

StandInOperatingSystem::~StandInOperatingSystem()
{
    bvt::Application &application = bvt::Application::sharedApplication();
    if (application.pushRegistrationHandler() == this)
        application.setPushRegistrationHandler(nullptr);
}

void StandInOperatingSystem::install()
{
    bvt::Application::sharedApplication().setPushRegistrationHandler(this);
}

void StandInOperatingSystem::setTokenToHandOut(const QByteArray &token)
{
    m_token = token;
}

QByteArray StandInOperatingSystem::generateToken()
{
    QByteArray token(32, Qt::Uninitialized);
    QRandomGenerator::system()->generate(token.begin(), token.end());
    return token;
}

void StandInOperatingSystem::registerUserNotificationSettings(
        const bvt::UserNotificationSettings &settings)
{
    m_requests.append(QStringLiteral("settings:%1").arg(settings.types));
}

void StandInOperatingSystem::registerForRemoteNotifications()
{
    m_requests.append(QStringLiteral("remote"));
    if (m_token.isEmpty())
        return;
    // The operating system answers later, never inside the request.
    QTimer::singleShot(0, this, [this, token = m_token] { Q_EMIT deviceTokenReceived(token); });
}

} // namespace bvtstandin
