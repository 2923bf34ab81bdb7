#pragma once

#include "recordedrequest.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QList>

namespace bvtsim {

// The requests the service took, oldest first, bounded so that a long run stays small: the most
// recent count requests, as many as fit in bytes (counted as they came in, the newest always
// kept), and at most bodyBytes of each body.
class RequestRecord
{
public:
    // Keeps request and answers its index, which is the last.
    int add(RecordedRequest request);
    // What the service answered the request at index.
    void answered(int index, int status, const QByteArray &body);
    QList<RecordedRequest> requests() const { return m_requests; } // credentials too
    // The requests as JSON, credentials shown by their scheme alone, so that whatever reads it (a
    // log, a shared terminal) learns no secret from it.
    QJsonArray masked() const;
    static QJsonObject masked(const RecordedRequest &request);
    QJsonObject masked(int index) const { return masked(m_requests.value(index)); }
    void clear();

    void setCountLimit(int count);
    void setByteLimit(qsizetype bytes);
    void setBodyLimit(qsizetype bytes);

private:
    void trim();

    QList<RecordedRequest> m_requests;
    int m_countLimit = 10000;
    qsizetype m_byteLimit = 64 * 1024 * 1024;
    qsizetype m_bodyLimit = 64 * 1024;
    qsizetype m_bytes = 0; // what the requests kept came in
};

} // namespace bvtsim
