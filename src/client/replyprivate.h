#pragma once

#include <Brevanti/Reply.h>

#include "callwitness.h"

namespace bvt {

// A reply's result, and how the client ends it.
class Reply::Private
{
public:
    // Ends the reply with what the outcome tells, from the event loop; the first end wins.
    void end(Reply *reply, const Outcome &outcome);
    void end(Reply *reply, Error error, const QString &errorString);

    bool ending = false; // an end is on its way: later ones are dropped
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
