#pragma once

#include "core/internalexport.h"

#include <QHash>
#include <QString>
#include <QVariant>

namespace bvt {

// The application's own persistent key-value store, over QSettings (on a phone, Qt keeps these in
// the platform's user defaults). Every read goes to storage afresh, so a value that another
// process wrote is seen at once, and a value reads back the same in every process.
class BREVANTI_CORE_INTERNAL_EXPORT UserDefaults
{
public:
    static UserDefaults &standardUserDefaults();

    // A stored string as it is, a stored number as its decimal text (a bool as 1 or 0); anything
    // else, nothing stored, or an entry that cannot be decoded is a null QString. A settings file
    // that cannot be read is logged, once until it can be read again.
    QString stringForKey(const QString &key) const;

    // Stores the value; a null value (or a null string) removes the entry. Reads see the change at
    // once; storage gets it with the next synchronize.
    void setObject(const QVariant &value, const QString &key);
    void removeObjectForKey(const QString &key);

    // Writes the changes made since the last successful flush to storage at once (atomically), in
    // a file that only its owner can read, which replaces a symbolic link rather than writing
    // through it. A write is successful only once the file has been read back whole. On failure
    // the file stays as it was, the changes stay pending in memory, where reads still see them,
    // the failure is logged, and they are written with the next successful flush.
    bool synchronize();

private:
    // Changes not yet written: the value to store, or an invalid QVariant for a removal.
    QHash<QString, QVariant> m_pending;
    mutable bool m_unreadableLogged = false;
};

} // namespace bvt
