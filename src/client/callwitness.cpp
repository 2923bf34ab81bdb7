#include "callwitness.h"

namespace bvt {

namespace {
// Calls are made on the main thread, one at a time, so one innermost witness is enough.
CallWitness *innermost = nullptr;
} // namespace

CallWitness::CallWitness(Report report) : m_report(std::move(report)), m_outer(innermost)
{
    innermost = this;
}

CallWitness::~CallWitness()
{
    innermost = m_outer;
}

CallWitness::Report CallWitness::take()
{
    if (!innermost || innermost->m_reached)
        return {};
    innermost->m_reached = true;
    return innermost->m_report;
}

} // namespace bvt
