#include "idlewatch.h"

#include <QTcpSocket>

namespace bvtsim {

IdleWatch::IdleWatch(QTcpSocket *socket, std::chrono::milliseconds timeout) : QObject(socket)
{
    m_timer.setSingleShot(true);
    m_timer.setInterval(timeout);
    connect(&m_timer, &QTimer::timeout, socket, &QAbstractSocket::abort);
    connect(socket, &QIODevice::readyRead, this, &IdleWatch::restart);
    connect(socket, &QIODevice::bytesWritten, this, &IdleWatch::restart);
    m_timer.start();
}

void IdleWatch::watch(QTcpSocket *socket, std::chrono::milliseconds timeout)
{
    if (timeout.count() > 0)
        new IdleWatch(socket, timeout);
}

IdleWatch *IdleWatch::of(QTcpSocket *socket)
{
    return socket->findChild<IdleWatch *>(QString(), Qt::FindDirectChildrenOnly);
}

void IdleWatch::hold(QTcpSocket *socket)
{
    if (IdleWatch *watch = of(socket)) {
        ++watch->m_holds;
        watch->m_timer.stop();
    }
}

void IdleWatch::release(QTcpSocket *socket)
{
    if (IdleWatch *watch = of(socket)) {
        --watch->m_holds;
        watch->restart();
    }
}

void IdleWatch::restart()
{
    if (m_holds == 0)
        m_timer.start();
}

} // namespace bvtsim
