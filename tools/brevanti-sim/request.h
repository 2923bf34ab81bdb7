#pragma once

#include "form.h"
#include "framing.h"
#include "recordedrequest.h"

namespace bvtsim {

// A request as the routes read it: its query and its form-encoded body decoded.
struct Request
{
    static Request of(const RecordedRequest &recorded);

    QByteArray header(const QByteArray &name) const { return headerValue(headers, name); }

    QByteArray method;
    QString path; // percent-encoded, as received
    Form query;
    Form form; // the body when it is form-encoded, else empty
    bool formEncoded = false;
    Headers headers;
};

} // namespace bvtsim
