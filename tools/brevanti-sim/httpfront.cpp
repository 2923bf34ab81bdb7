#include "httpfront.h"

namespace bvtsim {

bool HttpFront::handleRequest(const QHttpServerRequest &request, QTcpSocket *socket)
{
    m_handler(request, socket);
    return true;
}

} // namespace bvtsim
