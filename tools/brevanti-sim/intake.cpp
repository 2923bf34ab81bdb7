#include "intake.h"

#include "reply.h"

#include <QTcpSocket>

#include <algorithm>

namespace bvtsim {

namespace {

// A chunk size line needs no more than this to be read: the rest is an extension.
const qsizetype ChunkLineKept = 64;

// The length of the header section in head, the blank line included; -1 when it has not ended.
// from: where the search may start, as what came before was searched already.
qsizetype headEnd(const QByteArray &head, qsizetype from)
{
    // Lines end in CR LF, or LF alone, which the HTTP layer takes too.
    const qsizetype crlf = head.indexOf("\n\r\n", from);
    const qsizetype lf = head.indexOf("\n\n", from);
    if (lf >= 0 && (crlf < 0 || lf < crlf))
        return lf + 2;
    return crlf < 0 ? -1 : crlf + 3;
}

// The values of every header called name in a header section.
QByteArrayList values(const QByteArray &head, const char *name)
{
    QByteArrayList found;
    for (const QByteArray &line : head.split('\n')) {
        const qsizetype colon = line.indexOf(':');
        if (colon >= 0 && line.left(colon).compare(name, Qt::CaseInsensitive) == 0)
            found.append(line.mid(colon + 1).trimmed());
    }
    return found;
}

// The largest body length a header section announces; 0 when it announces none. Lengths that are
// not numbers are left to the service, which refuses them.
qint64 announcedLength(const QByteArray &head)
{
    qint64 longest = 0;
    for (const QByteArray &value : values(head, "Content-Length"))
        longest = std::max(longest, value.toLongLong());
    return longest;
}

} // namespace

Intake::Intake(QTcpSocket *socket, const RequestLimits &limits)
    : QObject(socket), m_socket(socket), m_limits(limits)
{
    m_deadline.setSingleShot(true);
    m_deadline.setInterval(limits.headerTimeout);
    connect(&m_deadline, &QTimer::timeout, this, [this] {
        refuse(408, "request_timeout",
               QStringLiteral("The request's headers did not all arrive in time."));
    });
    connect(socket, &QIODevice::readyRead, this, &Intake::arrived);
}

void Intake::watch(QTcpSocket *socket, const RequestLimits &limits)
{
    new Intake(socket, limits);
}

void Intake::arrived()
{
    // The HTTP layer reads all there is on every arrival, so what is unread here is what is new.
    const QByteArray bytes = m_socket->peek(m_socket->bytesAvailable());
    QByteArrayView rest(bytes);
    while (!rest.isEmpty()) {
        const qsizetype taken = m_part == Part::Head ? takeHead(rest) : takeBody(rest);
        if (taken < 0)
            return;
        rest = rest.sliced(taken);
    }
}

qsizetype Intake::takeHead(QByteArrayView rest)
{
    // Timed from the first byte, so that a connection kept open between requests is not cut.
    if (m_head.isEmpty() && m_limits.headerTimeout.count() > 0)
        m_deadline.start();
    const qsizetype before = m_head.size();
    m_head += rest.first(std::min(rest.size(), m_limits.headerBytes - before));
    const qsizetype end = headEnd(m_head, std::max<qsizetype>(before - 2, 0));
    if (end < 0) {
        if (m_head.size() < m_limits.headerBytes)
            return rest.size();
        refuse(431, "headers_too_large",
               QStringLiteral("The request's header section is over %1 bytes.")
                       .arg(m_limits.headerBytes));
        return -1;
    }
    m_deadline.stop();
    m_head.truncate(end);
    if (!values(m_head, "Transfer-Encoding").isEmpty()) {
        m_part = Part::ChunkSize;
    } else {
        m_part = Part::Body;
        m_left = announcedLength(m_head);
        // Refused before any of it arrives.
        if (m_left > m_limits.bodyBytes) {
            refuse(413, "body_too_large",
                   QStringLiteral("The request's body is over %1 bytes.").arg(m_limits.bodyBytes));
            return -1;
        }
        if (m_left == 0)
            nextRequest();
    }
    return end - before;
}

qsizetype Intake::takeBody(QByteArrayView rest)
{
    const bool data = m_part == Part::Body || m_part == Part::ChunkData;
    const qsizetype newline = rest.indexOf('\n');
    const qsizetype taken = data ? qsizetype(std::min<qint64>(rest.size(), m_left))
                                 : (newline < 0 ? rest.size() : newline + 1);
    m_bodyWire += taken;
    if (m_bodyWire > m_limits.bodyBytes) {
        refuse(413, "body_too_large",
               QStringLiteral("The request's body is over %1 bytes.").arg(m_limits.bodyBytes));
        return -1;
    }
    if (data) {
        m_left -= taken;
        if (m_left > 0)
            return taken;
        if (m_part == Part::Body)
            nextRequest();
        else
            m_part = Part::ChunkSize; // the line end after a chunk's data reads as an empty line
        return taken;
    }
    m_line += rest.first(std::min(taken, std::max<qsizetype>(ChunkLineKept - m_line.size(), 0)));
    if (newline < 0)
        return taken;
    const QByteArray line = m_line.trimmed();
    m_line.clear();
    if (m_part == Part::Trailer) {
        if (line.isEmpty())
            nextRequest();
    } else if (!line.isEmpty()) {
        // A size that is no number is left to the HTTP layer, which refuses it.
        m_left = std::max<qint64>(line.split(';').first().trimmed().toLongLong(nullptr, 16), 0);
        m_part = m_left > 0 ? Part::ChunkData : Part::Trailer;
    }
    return taken;
}

void Intake::nextRequest()
{
    m_part = Part::Head;
    m_head.clear();
    m_bodyWire = 0;
}

void Intake::refuse(int status, const char *code, const QString &message)
{
    // The connection ends with this answer, so the rest of the request is of no interest.
    disconnect(m_socket, nullptr, this, nullptr);
    m_deadline.stop();
    Reply reply = replyOf(error(status, code, message));
    reply.close = true;
    respond(m_socket, m_head.left(m_head.indexOf(' ')), reply);
}

} // namespace bvtsim
