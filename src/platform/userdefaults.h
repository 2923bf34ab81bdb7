#pragma once

#include <QString>
#include <QVariant>

namespace bvt {

// The application's own persistent key-value store, over QSettings (on a phone, Qt keeps these in
// the platform's user defaults). Values are stored as given and read back as strings.
class UserDefaults
{
public:
    static UserDefaults &standardUserDefaults();

    // A stored string as it is, a stored number as its decimal text; anything else, or nothing
    // stored, is a null QString.
    QString stringForKey(const QString &key) const;

    // Stores the value; a null value removes the entry.
    void setObject(const QVariant &value, const QString &key);
    void removeObjectForKey(const QString &key);

    // Writes pending changes to storage at once (atomically). On failure the change stays pending
    // in memory, is logged, and is written with the next successful flush.
    bool synchronize();
};

} // namespace bvt
