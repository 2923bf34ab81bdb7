#pragma once

#include <QThread>
#include <QUrl>

#include <memory>

// The least an HTTP/1.1 server can do, on the loopback interface and with an event loop of its own,
// so that a benchmark measures the client and not the serving: connections are kept alive, a
// request is read only as far as its length, and every request gets the same small JSON answer,
// except the token request, which gets a fresh token.
class RawServerThread
{
public:
    RawServerThread();
    ~RawServerThread();

    QUrl baseUrl() const { return m_baseUrl; }

private:
    std::unique_ptr<QThread> m_thread;
    QUrl m_baseUrl;
};
