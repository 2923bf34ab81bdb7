#pragma once

#include "jsonresponse.h"

#include <functional>

namespace bvt {

// What became of one service call, as far as the library knows.
struct Outcome
{
    enum Kind {
        Answered, // the service answered, or the exchange failed: response says which
        NoToken,  // no access token could be had; response.error says why, nothing was sent
        NotSent,  // the URL left the service's origin, nothing was sent
    };
    Kind kind = Answered;
    JsonResponse response;
};

// Hears the one outcome of a call that went out; never called before the call has returned,
// except when no token can be sent at all.
using Completion = std::function<void(const Outcome &outcome)>;

// How a call began: sent (its completion will be told), or ended at once with nothing sent.
struct Start
{
    enum Kind {
        Sent,
        AlreadyDone,    // nothing to do: the device was registered before
        NotInitialised, // the library was not initialised in this process
        NotRegistered,  // the device has no identifier yet
        Refused,        // an argument was refused; refusal says which
    };
    Kind kind = Sent;
    const char *refusal = nullptr;
};

} // namespace bvt
