#pragma once

#include "answer.h"

namespace bvtsim {

class Service;
struct RecordedRequest;

// The routes under "/_sim/" that reach the service's faults and request record from outside its
// process: POST /_sim/faults sets a fault from a JSON object, DELETE /_sim/faults clears them,
// GET /_sim/requests lists the recorded requests, DELETE /_sim/requests forgets them.
class AdminRoutes
{
public:
    explicit AdminRoutes(Service &service) : m_service(service) { }

    static bool covers(const QString &path);
    Answer answer(const RecordedRequest &request) const;

private:
    Answer setFault(const QByteArray &json) const;

    Service &m_service;
};

} // namespace bvtsim
