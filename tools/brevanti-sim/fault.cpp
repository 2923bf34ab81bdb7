#include "fault.h"

namespace bvtsim {

Fault Fault::status(int status)
{
    Fault fault;
    fault.answerStatus = status;
    return fault;
}

Fault Fault::answer(int status, const QByteArray &body, const QByteArray &contentType)
{
    Fault fault = Fault::status(status);
    // An empty body is still one to send, so it must not read as none.
    fault.body = body.isNull() ? QByteArray("") : body;
    fault.contentType = contentType;
    return fault;
}

Fault Fault::drop()
{
    Fault fault;
    fault.dropConnection = true;
    return fault;
}

Fault Fault::delay(std::chrono::milliseconds delay)
{
    Fault fault;
    fault.delayMs = int(delay.count());
    return fault;
}

Fault Fault::cut(const QByteArray &body)
{
    Fault fault = answer(200, body);
    fault.truncateBody = true;
    return fault;
}

Fault Fault::stall(const QByteArray &body)
{
    Fault fault = cut(body);
    fault.stallAfterHalf = true;
    return fault;
}

Fault Fault::paced(Pace pace) const
{
    Fault fault = *this;
    fault.pace = pace;
    return fault;
}

Fault Fault::withContentType(const QByteArray &contentType) const
{
    Fault fault = *this;
    fault.contentType = contentType;
    return fault;
}

Fault Fault::withHeader(const QByteArray &name, const QByteArray &value) const
{
    Fault fault = *this;
    fault.headers.append({name, value});
    return fault;
}

Fault Fault::times(int count) const
{
    Fault fault = *this;
    fault.remaining = count;
    return fault;
}

bool Fault::replacesAnswer() const
{
    return answerStatus || !body.isNull() || dropConnection;
}

Reply Fault::applyTo(Reply reply) const
{
    if (replacesAnswer()) {
        reply.status = answerStatus ? answerStatus : 200;
        reply.body = body.isNull() ? QByteArrayLiteral(R"({"error":"fault"})") : body;
    }
    if (!contentType.isNull())
        reply.contentType = contentType;
    reply.headers += headers;
    reply.dropConnection = dropConnection;
    reply.truncateBody = truncateBody;
    reply.stallAfterHalf = stallAfterHalf;
    reply.delayMs = delayMs;
    reply.pace = pace;
    return reply;
}

} // namespace bvtsim
