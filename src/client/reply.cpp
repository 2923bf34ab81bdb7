#include "replyprivate.h"

#include <QMetaObject>
#include <QPointer>

namespace bvt {

Reply *Reply::Private::track(QObject *parent, const std::function<Start(const Completion &)> &call)
{
    auto *reply = new Reply(parent);
    const Start start = call([reply = QPointer<Reply>(reply)](const Outcome &outcome) {
        if (reply)
            reply->d->end(reply, outcome);
    });
    Private &d = *reply->d;
    switch (start.kind) {
    case Start::Sent:
        d.callReturned = true;
        break;
    case Start::AlreadyDone:
        d.end(reply, NoError, QString());
        break;
    case Start::NotInitialised:
        d.end(reply, NotRegisteredError, QStringLiteral("The library is not initialised"));
        break;
    case Start::NotRegistered:
        d.end(reply, NotRegisteredError,
              QStringLiteral("The device has no identifier yet: it is not registered"));
        break;
    case Start::Refused:
        d.end(reply, RefusedArgumentError, QString::fromUtf8(start.refusal));
        break;
    }
    return reply;
}

void Reply::Private::end(Reply *reply, const Outcome &outcome)
{
    if (ending)
        return;
    const JsonResponse &response = outcome.response;
    switch (outcome.kind) {
    case Outcome::NoToken:
        return end(reply, NoAccessTokenError, response.error.message);
    case Outcome::NotSent:
        return end(reply, RefusedArgumentError,
                   QStringLiteral("The path leads away from the service's origin"));
    case Outcome::Answered:
        break;
    }
    Error error = NoError;
    if (response.accepted)
        error = NoError;
    else if (response.status == 0 || response.networkError != 0)
        error = NetworkError;
    else if (response.status < 200 || response.status > 299)
        error = HttpStatusError;
    else
        error = InvalidAnswerError;
    httpStatus = response.status;
    networkError = response.networkError;
    answer = response.object;
    answerText = response.text;
    end(reply, error, error == NoError ? QString() : response.error.message, callReturned);
}

void Reply::Private::end(Reply *reply, Error error, const QString &errorString, bool atOnce)
{
    if (ending)
        return;
    ending = true;
    this->error = error;
    this->errorString = errorString;
    const auto finish = [reply] {
        reply->d->finished = true;
        Q_EMIT reply->finished();
        if (reply->d->autoDelete)
            reply->deleteLater();
    };
    // Never before the call that made the reply returned, so that a host can connect first.
    if (atOnce)
        finish();
    else
        QMetaObject::invokeMethod(reply, finish, Qt::QueuedConnection);
}

Reply::Reply(QObject *parent) : QObject(parent), d(std::make_unique<Private>()) { }

Reply::~Reply() = default;

bool Reply::isFinished() const
{
    return d->finished;
}

Reply::Error Reply::error() const
{
    return d->finished ? d->error : NoError;
}

int Reply::httpStatus() const
{
    return d->finished ? d->httpStatus : 0;
}

QString Reply::errorString() const
{
    return d->finished ? d->errorString : QString();
}

QVariant Reply::answer() const
{
    return d->finished ? d->answer : QVariant();
}

QString Reply::answerText() const
{
    return d->finished ? d->answerText : QString();
}

int Reply::networkError() const
{
    return d->finished ? d->networkError : 0;
}

bool Reply::autoDelete() const
{
    return d->autoDelete;
}

void Reply::setAutoDelete(bool autoDelete)
{
    d->autoDelete = autoDelete;
}

void Reply::abort()
{
    // The answer that may still come finds the reply ended.
    d->end(this, AbortedError, QStringLiteral("The call was aborted"));
}

} // namespace bvt
