#include "reply.h"

#include <QTcpSocket>
#include <QTimer>

namespace bvtsim {

namespace {

QByteArray reasonPhrase(int status)
{
    switch (status) {
    case 200:
        return "OK";
    case 201:
        return "Created";
    case 204:
        return "No Content";
    case 301:
        return "Moved Permanently";
    case 302:
        return "Found";
    case 303:
        return "See Other";
    case 307:
        return "Temporary Redirect";
    case 308:
        return "Permanent Redirect";
    case 400:
        return "Bad Request";
    case 401:
        return "Unauthorized";
    case 403:
        return "Forbidden";
    case 404:
        return "Not Found";
    case 405:
        return "Method Not Allowed";
    case 408:
        return "Request Timeout";
    case 409:
        return "Conflict";
    case 413:
        return "Content Too Large";
    case 422:
        return "Unprocessable Entity";
    case 429:
        return "Too Many Requests";
    case 431:
        return "Request Header Fields Too Large";
    case 500:
        return "Internal Server Error";
    case 502:
        return "Bad Gateway";
    case 503:
        return "Service Unavailable";
    case 504:
        return "Gateway Timeout";
    default:
        return "Status " + QByteArray::number(status);
    }
}

// Writes what a pace other than Whole sends after the head, for as long as it goes on.
void pace(QTcpSocket *socket, const Reply &reply)
{
    const QByteArray block(64 * 1024, ' ');
    if (reply.pace == Pace::HugeLength) {
        socket->write(block);
    } else if (reply.pace == Pace::Trickle) {
        auto *timer = new QTimer(socket);
        QObject::connect(timer, &QTimer::timeout, socket,
                         [socket, body = reply.body, sent = 0]() mutable {
                             if (sent < body.size())
                                 socket->write(body.mid(sent++, 1));
                         });
        timer->start(20);
    } else {
        // Topped up from a timer while the connection lasts, never faster than the client reads.
        const QByteArray chunk = QByteArray::number(block.size(), 16) + "\r\n" + block + "\r\n";
        auto *writer = new QTimer(socket);
        QObject::connect(writer, &QTimer::timeout, socket, [socket, chunk] {
            while (socket->state() == QAbstractSocket::ConnectedState
                   && socket->bytesToWrite() < 4 * chunk.size()) {
                if (socket->write(chunk) != chunk.size())
                    break;
            }
        });
        writer->start(1);
    }
}

} // namespace

Reply replyOf(const Answer &answer)
{
    Reply reply;
    reply.status = answer.status;
    reply.body = answer.body.toJson(QJsonDocument::Compact);
    reply.headers = answer.headers;
    return reply;
}

void respond(QTcpSocket *socket, const QByteArray &method, const Reply &reply)
{
    if (reply.dropConnection) {
        socket->abort();
        return;
    }
    QByteArray head = "HTTP/1.1 " + QByteArray::number(reply.status) + ' '
            + reasonPhrase(reply.status) + "\r\n";
    // A 204 has no body, so it announces neither a length nor a type.
    const bool hasBody = reply.status != 204;
    if (hasBody) {
        const QByteArray length = reply.pace == Pace::HugeLength
                ? QByteArrayLiteral("Content-Length: 99999999999999999999")
                : reply.pace == Pace::EndlessChunks
                ? QByteArrayLiteral("Transfer-Encoding: chunked")
                : "Content-Length: " + QByteArray::number(reply.body.size());
        head += "Content-Type: " + reply.contentType + "\r\n" + length + "\r\n";
    }
    for (const auto &[name, value] : reply.headers)
        head += name + ": " + value + "\r\n";
    if (reply.close)
        head += "Connection: close\r\n";
    socket->write(head + "\r\n");
    if (reply.pace != Pace::Whole && hasBody && method != "HEAD")
        return pace(socket, reply);
    if (hasBody && method != "HEAD")
        socket->write(reply.truncateBody ? reply.body.left(reply.body.size() / 2) : reply.body);
    if ((reply.truncateBody && !reply.stallAfterHalf) || reply.close)
        socket->disconnectFromHost(); // still sends what was written
}

} // namespace bvtsim
