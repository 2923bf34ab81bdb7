#pragma once

#include "outcome.h"

#include <Brevanti/BVTTypes.h>

#include <stdexcept>

namespace bvt {

// A call's outcome told the way the facade's calls tell it: success with the decoded answer,
// failure with the body of a failed answer (null when none arrived, or when the path led away from
// the service), and nothing at all when no token could be had.
inline Completion callbacks(const BVTSuccessBlock &success, const BVTFailureBlock &failure)
{
    return [success, failure](const Outcome &outcome) {
        if (outcome.kind == Outcome::NoToken)
            return;
        if (outcome.response.accepted) {
            if (success)
                success(outcome.response.object);
        } else if (failure) {
            failure(outcome.response.text);
        }
    };
}

// The facade's calls end silently when nothing was sent, and throw at a refused argument.
inline void throwIfRefused(const Start &start)
{
    if (start.kind == Start::Refused)
        throw std::invalid_argument(start.refusal);
}

} // namespace bvt
