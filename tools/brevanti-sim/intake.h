#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QObject>
#include <QTimer>

#include <chrono>

class QTcpSocket;

namespace bvtsim {

// What one request may bring before the service sees it.
struct RequestLimits
{
    qsizetype headerBytes = 64 * 1024; // request line and headers, the blank line included
    qsizetype bodyBytes = 1024 * 1024; // as sent: chunked framing counts too
    std::chrono::milliseconds headerTimeout = std::chrono::seconds(10); // from its first byte
};

// Watches the bytes of each request as they arrive, before the HTTP layer takes them: Qt
// HttpServer 6.4 keeps a whole request in memory until it is complete, and has no limits of its
// own. A request that passes one gets 431 (header section), 413 (body, at once when its
// Content-Length says so) or 408 (header section still incomplete after the time-out), and its
// connection is closed. It finds where each request ends by itself (Content-Length, chunked, or no
// body), so that requests sent back to back are told apart.
class Intake : public QObject
{
    Q_OBJECT
public:
    // Watches socket, as its child. Call before the HTTP layer connects to the socket, so that the
    // intake sees each arrival before the HTTP layer reads it.
    static void watch(QTcpSocket *socket, const RequestLimits &limits);

private:
    enum class Part { Head, Body, ChunkSize, ChunkData, Trailer };

    Intake(QTcpSocket *socket, const RequestLimits &limits);
    void arrived();
    // Each takes the bytes of rest that belong to its part; -1 once the request is refused.
    qsizetype takeHead(QByteArrayView rest);
    qsizetype takeBody(QByteArrayView rest);
    void nextRequest();
    void refuse(int status, const char *code, const QString &message);

    QTcpSocket *m_socket;
    RequestLimits m_limits;
    QTimer m_deadline; // for the header section
    Part m_part = Part::Head;
    QByteArray m_head;     // the request's header section so far, up to the limit
    QByteArray m_line;     // the start of a chunk size or trailer line
    qint64 m_left = 0;     // bytes left of the body or of the chunk
    qint64 m_bodyWire = 0; // bytes of the body so far, framing included
};

} // namespace bvtsim
