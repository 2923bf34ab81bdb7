#pragma once

#include <QObject>
#include <QTimer>

#include <chrono>

class QTcpSocket;

namespace bvtsim {

// Closes a connection on which no byte has moved for a time-out, so that a client that trickles
// or goes silent gives its connection up. The service stops the clock while it holds an answer:
// then the client is not the one keeping the connection quiet.
class IdleWatch : public QObject
{
    Q_OBJECT
public:
    // Watches socket, as its child; a zero time-out leaves it unwatched.
    static void watch(QTcpSocket *socket, std::chrono::milliseconds timeout);
    static void hold(QTcpSocket *socket);
    static void release(QTcpSocket *socket);

private:
    IdleWatch(QTcpSocket *socket, std::chrono::milliseconds timeout);
    static IdleWatch *of(QTcpSocket *socket);
    void restart();

    QTimer m_timer;
    int m_holds = 0; // answers the service is still working on
};

} // namespace bvtsim
