#include "requestrecord.h"

#include <QJsonObject>

#include <algorithm>

namespace bvtsim {

namespace {

// What a recorded request takes, counted as the bytes it came in: the record is bounded by it.
qsizetype sizeOf(const RecordedRequest &request)
{
    qsizetype size = request.method.size() + request.path.size() + request.query.size()
            + request.body.size();
    for (const auto &[name, value] : request.headers)
        size += name.size() + value.size();
    return size;
}

// A header as the record shows it: credentials by their scheme alone.
QByteArray shown(const QByteArray &name, const QByteArray &value)
{
    if (name.compare("Cookie", Qt::CaseInsensitive) == 0)
        return "***";
    if (name.compare("Authorization", Qt::CaseInsensitive) != 0
        && name.compare("Proxy-Authorization", Qt::CaseInsensitive) != 0)
        return value;
    const QByteArray credentials = value.trimmed();
    const qsizetype space = credentials.indexOf(' ');
    return space < 0 ? QByteArray("***") : credentials.left(space) + " ***";
}

} // namespace

// Header values are Latin-1 on the wire; bodies are shown as UTF-8 text.
QJsonObject RequestRecord::masked(const RecordedRequest &request)
{
    QJsonArray headers;
    for (const auto &[name, value] : request.headers)
        headers.append(
                QJsonArray{QString::fromLatin1(name), QString::fromLatin1(shown(name, value))});
    return {{"method", QString::fromLatin1(request.method)},
            {"path", request.path},
            {"query", QString::fromLatin1(request.query)},
            {"headers", headers},
            {"body", QString::fromUtf8(request.body)},
            {"connection", request.connection},
            {"time", request.received.toUTC().toString(Qt::ISODateWithMs)},
            {"status", request.status},
            {"answer", QString::fromUtf8(request.answer)}};
}

int RequestRecord::add(RecordedRequest request)
{
    request.body = request.body.left(m_bodyLimit);
    m_bytes += sizeOf(request);
    m_requests.append(std::move(request));
    trim();
    return int(m_requests.size() - 1);
}

void RequestRecord::answered(int index, int status, const QByteArray &body)
{
    if (index < 0 || index >= m_requests.size())
        return;
    m_requests[index].status = status;
    m_requests[index].answer = body.left(m_bodyLimit);
}

QJsonArray RequestRecord::masked() const
{
    QJsonArray requests;
    for (const RecordedRequest &request : m_requests)
        requests.append(masked(request));
    return requests;
}

void RequestRecord::clear()
{
    m_requests.clear();
    m_bytes = 0;
}

void RequestRecord::setCountLimit(int count)
{
    m_countLimit = std::max(count, 1);
    trim();
}

void RequestRecord::setByteLimit(qsizetype bytes)
{
    m_byteLimit = std::max<qsizetype>(bytes, 0);
    trim();
}

void RequestRecord::setBodyLimit(qsizetype bytes)
{
    m_bodyLimit = std::max<qsizetype>(bytes, 0);
}

void RequestRecord::trim()
{
    // The newest stays even when it alone is over the bound: the service names it as recorded.
    while (m_requests.size() > m_countLimit || (m_requests.size() > 1 && m_bytes > m_byteLimit))
        m_bytes -= sizeOf(m_requests.takeFirst());
}

} // namespace bvtsim
