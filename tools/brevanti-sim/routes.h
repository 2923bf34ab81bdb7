#pragma once

#include "answer.h"

#include <QDateTime>
#include <QHash>
#include <QString>

#include <functional>

namespace bvtsim {

class ServiceState;
struct Request;

// The service's own routes, each reading and changing the state: the token endpoint, and the
// bearer-checked echo, device and preference routes. A request goes to the route of its method and
// exact encoded path.
class Routes
{
public:
    Routes(ServiceState &state, std::function<QDateTime()> now);

    void addClient(const QString &id, const QString &secret);
    void setTokenLifetime(int seconds) { m_tokenLifetime = seconds; }

    Answer answer(const Request &request);

private:
    struct Route;
    static const QList<Route> &table();

    bool bearerValid(const Request &request) const;
    Answer issueToken(const Request &request);
    Answer echo(const Request &request) const;
    Answer registerDevice(const Request &request);
    Answer setDeviceUser(const Request &request, bool assign);
    Answer setPushToken(const Request &request);
    Answer devicePreferences(const Request &request) const;
    Answer setPreference(const Request &request, bool enabled);

    ServiceState &m_state;
    std::function<QDateTime()> m_now;
    QHash<QString, QString> m_clients; // id -> secret
    int m_tokenLifetime = 7200;
};

} // namespace bvtsim
