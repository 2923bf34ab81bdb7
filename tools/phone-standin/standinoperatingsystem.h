#pragma once

#include <Brevanti/platform/Application.h>

#include <QByteArray>
#include <QList>
#include <QObject>
#include <QString>

namespace bvtstandin {

// The phone's operating system as far as push registration goes, for the demo and the tests: it
// records every request the library makes and, when given a token, answers a remote-notification
// registration by handing that token to the host (deviceTokenReceived), later, as a phone does.
class StandInOperatingSystem : public QObject, public bvt::PushRegistrationHandler
{
    Q_OBJECT
public:
    explicit StandInOperatingSystem(QObject *parent = nullptr);
    ~StandInOperatingSystem() override; // uninstalls itself

    void install(); // becomes the application's push registration handler

    void setTokenToHandOut(const QByteArray &token); // empty: registrations get no answer
    static QByteArray generateToken();               // 32 random bytes, as a phone's token

    // "settings:<types>" and "remote", in the order they arrived.
    QStringList requests() const { return m_requests; }
    int remoteRegistrations() const { return int(m_requests.count(QStringLiteral("remote"))); }
    void clear() { m_requests.clear(); }

    void registerUserNotificationSettings(const bvt::UserNotificationSettings &settings) override;
    void registerForRemoteNotifications() override;

Q_SIGNALS:
    void deviceTokenReceived(const QByteArray &token);

private:
    QStringList m_requests;
    QByteArray m_token;
};

} // namespace bvtstandin
