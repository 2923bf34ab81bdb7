#pragma once

#include <functional>
#include <memory>

class QSslConfiguration;
class QTcpServer;
class QTcpSocket;

namespace bvtsim {

// Shown each connection as it is accepted, before the HTTP layer sees it.
using AcceptHook = std::function<void(QTcpSocket *)>;

std::unique_ptr<QTcpServer> plainListener(AcceptHook accepted);
// Over TLS. The connection is shown before the handshake, so the connections a client rejects
// count too.
std::unique_ptr<QTcpServer> tlsListener(AcceptHook accepted,
                                        const QSslConfiguration &configuration);

} // namespace bvtsim
