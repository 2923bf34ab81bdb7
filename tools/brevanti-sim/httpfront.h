#pragma once

#include <QAbstractHttpServer>

#include <functional>

namespace bvtsim {

// Hands each parsed request to the service together with its socket: answering on the socket
// directly is what lets the service send any status, truncate a body or drop the connection.
class HttpFront : public QAbstractHttpServer
{
public:
    using Handler = std::function<void(const QHttpServerRequest &, QTcpSocket *)>;

    explicit HttpFront(Handler handler) : m_handler(std::move(handler)) { }

protected:
    bool handleRequest(const QHttpServerRequest &request, QTcpSocket *socket) override;
    // Never called: handleRequest takes every request.
    void missingHandler(const QHttpServerRequest &, QTcpSocket *) override { }

private:
    Handler m_handler;
};

} // namespace bvtsim
