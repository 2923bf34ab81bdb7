#include "request.h"

namespace bvtsim {

Request Request::of(const RecordedRequest &recorded)
{
    const QByteArray mediaType = recorded.header("Content-Type").split(';').first().trimmed();
    Request request;
    request.method = recorded.method;
    request.path = recorded.path;
    request.query = Form::decode(recorded.query);
    request.formEncoded =
            mediaType.compare("application/x-www-form-urlencoded", Qt::CaseInsensitive) == 0;
    if (request.formEncoded)
        request.form = Form::decode(recorded.body);
    request.headers = recorded.headers;
    return request;
}

} // namespace bvtsim
