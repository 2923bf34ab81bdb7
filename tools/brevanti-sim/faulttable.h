#pragma once

#include "fault.h"

#include <QByteArray>
#include <QJsonArray>
#include <QList>
#include <QString>

#include <optional>

namespace bvtsim {

// The faults set for routes, each on a method ("*": every method) and an exact encoded path.
class FaultTable
{
public:
    // Replaces the fault set on the same method and path.
    void set(const QByteArray &method, const QString &path, const Fault &fault);
    void clear() { m_entries.clear(); }
    // The fault a request meets, counted as used; a fault on its exact method wins over one on
    // "*". Nothing when none applies.
    std::optional<Fault> take(const QByteArray &method, const QString &path);
    // The faults still in force, as the admin route's JSON spells them, with their method and
    // path.
    QJsonArray toJson() const;

private:
    struct Entry
    {
        QByteArray method;
        QString path;
        Fault fault;
    };
    QList<Entry> m_entries;
};

} // namespace bvtsim
