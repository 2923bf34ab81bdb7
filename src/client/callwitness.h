#pragma once

#include "core/internalexport.h"

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

// Hears the outcome of the one service call made while it is in scope. The described calls tell a
// failed token request only to the log, and a call that sends nothing not at all; a caller that
// must hear every end, as the Qt-native client does, makes the call inside a witness.
class BREVANTI_CORE_INTERNAL_EXPORT CallWitness
{
public:
    using Report = std::function<void(const Outcome &outcome)>;

    explicit CallWitness(Report report);
    ~CallWitness();
    CallWitness(const CallWitness &) = delete;
    CallWitness &operator=(const CallWitness &) = delete;

    // Whether the call sent a request (or tried to): else it ended before the request layer.
    bool reached() const { return m_reached; }

    // For the request layer, as a call enters it: the report of the witness in scope, given once,
    // so that a second request the same call makes is not reported; empty when there is none.
    static Report take();

private:
    Report m_report;
    bool m_reached = false;
    CallWitness *m_outer;
};

} // namespace bvt
