#include "faulttable.h"

namespace bvtsim {

void FaultTable::set(const QByteArray &method, const QString &path, const Fault &fault)
{
    for (Entry &entry : m_entries) {
        if (entry.method == method && entry.path == path) {
            entry.fault = fault;
            return;
        }
    }
    m_entries.append({method, path, fault});
}

std::optional<Fault> FaultTable::take(const QByteArray &method, const QString &path)
{
    Entry *match = nullptr;
    for (Entry &entry : m_entries) {
        if (entry.path != path || entry.fault.remaining == 0)
            continue;
        if (entry.method == method)
            match = &entry;
        else if (entry.method == "*" && !match)
            match = &entry;
    }
    if (!match)
        return std::nullopt;
    if (match->fault.remaining > 0)
        --match->fault.remaining;
    return match->fault;
}

} // namespace bvtsim
