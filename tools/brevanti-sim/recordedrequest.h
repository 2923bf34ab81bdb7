#pragma once

#include "framing.h"

#include <QByteArray>
#include <QDateTime>
#include <QString>

namespace bvtsim {

// One request exactly as it arrived on the wire.
struct RecordedRequest
{
    QByteArray method;  // "GET", "POST", "PATCH", ...
    QString path;       // percent-encoded path as received, without the query
    QByteArray query;   // percent-encoded query as received, without '?'; empty when none
    Headers headers;    // every header, name as sent
    QByteArray body;    // raw body bytes, cut to the recorded-body limit (Content-Length tells all)
    int connection = 0; // 1-based number of the TCP connection it came on
    QDateTime received;
    int status = 0;    // of the answer; 0 until answered, and when the connection was dropped
    QByteArray answer; // the answer's body, cut as the body is

    // Value of a header, name compared case-insensitively; a null QByteArray when absent.
    QByteArray header(const QByteArray &name) const { return headerValue(headers, name); }
};

} // namespace bvtsim
