#pragma once

#include <Brevanti/Reply.h>

#include "outcome.h"

#include <functional>

namespace bvt {

// A reply's result, and how the client ends it.
class Reply::Private
{
public:
    // A reply, a child of parent, for a call that is made at once: ended with what the call hears,
    // or with what kept it from being sent.
    static Reply *track(QObject *parent, const std::function<Start(const Completion &)> &call);

    // Ends the reply with what the outcome tells; the first end wins. An outcome that comes once
    // the call returned (from the network) is told at once, any other end from the event loop.
    void end(Reply *reply, const Outcome &outcome);
    void end(Reply *reply, Error error, const QString &errorString, bool atOnce = false);

    bool ending = false;       // an end is on its way: later ones are dropped
    bool callReturned = false; // the call that made the reply returned it
    bool finished = false;
    bool autoDelete = true;
    Error error = NoError;
    int httpStatus = 0;
    int networkError = 0;
    QString errorString;
    QVariant answer;
    QString answerText;
};

} // namespace bvt
