#include "listeners.h"

#include <QSslServer>
#include <QSslSocket>
#include <QTcpServer>
#include <QTcpSocket>

namespace bvtsim {

namespace {

class PlainServer : public QTcpServer
{
public:
    explicit PlainServer(AcceptHook accepted) : m_accepted(std::move(accepted)) { }

protected:
    void incomingConnection(qintptr descriptor) override
    {
        auto *socket = new QTcpSocket(this);
        socket->setSocketDescriptor(descriptor);
        m_accepted(socket);
        addPendingConnection(socket);
    }

private:
    AcceptHook m_accepted;
};

// QAbstractHttpServer::sslSetup reaches only the servers its own listen() makes, so a bound server
// has to encrypt by itself.
class TlsServer : public QSslServer
{
public:
    TlsServer(AcceptHook accepted, const QSslConfiguration &configuration)
    {
        setSslConfiguration(configuration);
        connect(this, &QSslServer::startedEncryptionHandshake, this,
                [accepted = std::move(accepted)](QSslSocket *socket) { accepted(socket); });
    }
};

} // namespace

std::unique_ptr<QTcpServer> plainListener(AcceptHook accepted)
{
    return std::make_unique<PlainServer>(std::move(accepted));
}

std::unique_ptr<QTcpServer> tlsListener(AcceptHook accepted, const QSslConfiguration &configuration)
{
    return std::make_unique<TlsServer>(std::move(accepted), configuration);
}

} // namespace bvtsim
