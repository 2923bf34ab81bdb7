#pragma once

namespace bvt {

// Everything that sets one HTTP verb's requests apart, written down once: how the parameters
// travel, the content type, and the log lines around it (a null format writes no line).
struct Verb
{
    const char *method;
    const char *contentType;
    bool parametersInQuery; // form-encoded into the URL's query, else into the body
    bool logsCredentials;   // only a GET writes the client credentials to the log
    const char *successLine;
    const char *failureLine;

    static const Verb get;
    static const Verb post;
    static const Verb patch;
};

} // namespace bvt
