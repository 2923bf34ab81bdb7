#pragma once

#include "answer.h"

namespace bvtsim {

class FaultTable;
class RequestRecord;
struct RecordedRequest;

// The routes under "/_sim/" that reach the service's faults and request record from outside its
// process: POST /_sim/faults sets a fault from a JSON object, GET /_sim/faults lists those still
// in force, DELETE /_sim/faults clears them,
// GET /_sim/requests lists the recorded requests, DELETE /_sim/requests forgets them.
class AdminRoutes
{
public:
    AdminRoutes(FaultTable &faults, RequestRecord &record) : m_faults(faults), m_record(record) { }

    static bool covers(const QString &path);
    Answer answer(const RecordedRequest &request) const;

private:
    Answer setFault(const QByteArray &json) const;

    FaultTable &m_faults;
    RequestRecord &m_record;
};

} // namespace bvtsim
