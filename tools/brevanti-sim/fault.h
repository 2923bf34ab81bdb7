#pragma once

#include "framing.h"
#include "pace.h"
#include "reply.h"

#include <QByteArray>

#include <chrono>

namespace bvtsim {

// How the service misbehaves for one route. A default Fault lets the route answer as usual; the
// named constructors say what goes wrong, and the modifiers after them refine it.
struct Fault
{
    // Answers status with {"error":"fault"} instead of running the route.
    static Fault status(int status);
    // Answers status with body, sent as contentType ("application/json" when null), instead of
    // running the route.
    static Fault answer(int status, const QByteArray &body, const QByteArray &contentType = {});
    // Closes the connection without answering.
    static Fault drop();
    // Runs the route and answers it this much later; the connection idles meanwhile.
    static Fault delay(std::chrono::milliseconds delay);
    // Answers 200 announcing body's whole length, sends half of it, and closes the connection.
    static Fault cut(const QByteArray &body);
    // Like cut, but the connection stays open, and silent, after the half.
    static Fault stall(const QByteArray &body);

    Fault paced(Pace pace) const; // the body goes out at pace
    Fault withContentType(const QByteArray &contentType) const;
    Fault withHeader(const QByteArray &name, const QByteArray &value) const;
    Fault times(int count) const; // applies to the next count requests only

    // Whether the route's own answer is replaced, so that the route does not run at all.
    bool replacesAnswer() const;
    // reply, which is the route's when the answer is not replaced, as the fault sends it.
    Reply applyTo(Reply reply) const;

    int delayMs = 0;             // wait this long before answering (or dropping)
    int answerStatus = 0;        // non-zero: answer with this status instead of running the route
    QByteArray body;             // non-null: answer with these bytes instead of running the route
    QByteArray contentType;      // non-null: sent as Content-Type instead of "application/json"
    bool dropConnection = false; // close the connection without answering
    bool truncateBody = false;   // announce the full Content-Length, send half the body, close
    bool stallAfterHalf = false; // with truncateBody: keep the connection open, and silent
    int remaining = -1;          // requests it still applies to; -1: until cleared
    Headers headers;             // sent after Content-Type and Content-Length
    Pace pace = Pace::Whole;     // how the body goes out
};

} // namespace bvtsim
