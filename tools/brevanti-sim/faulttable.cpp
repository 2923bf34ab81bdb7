#include "faulttable.h"

#include <QJsonObject>

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

QJsonArray FaultTable::toJson() const
{
    QJsonArray faults;
    for (const Entry &entry : m_entries) {
        const Fault &fault = entry.fault;
        if (fault.remaining == 0)
            continue;
        QJsonObject headers;
        for (const auto &[name, value] : fault.headers)
            headers.insert(QString::fromLatin1(name), QString::fromLatin1(value));
        QJsonObject json{{"method", QString::fromLatin1(entry.method)},
                         {"path", entry.path},
                         {"delay_ms", fault.delayMs},
                         {"drop_connection", fault.dropConnection},
                         {"truncate_body", fault.truncateBody},
                         {"stall_after_half", fault.stallAfterHalf},
                         {"times", fault.remaining},
                         {"headers", headers},
                         {"pace", paceNames().value(int(fault.pace))}};
        if (fault.answerStatus != 0)
            json.insert("status", fault.answerStatus);
        if (!fault.body.isNull())
            json.insert("body", QString::fromUtf8(fault.body));
        if (!fault.contentType.isNull())
            json.insert("content_type", QString::fromLatin1(fault.contentType));
        faults.append(json);
    }
    return faults;
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
