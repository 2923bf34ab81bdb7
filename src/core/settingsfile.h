#pragma once

#include "core/internalexport.h"

#include <QHash>
#include <QString>
#include <QVariant>

namespace bvt {

// The application's settings file, written so that it is only ever replaced by a file proven
// whole. QSettings alone reports success for a file that a full disk cut short, even to nothing,
// and writes through a symbolic link into whatever the link names.
class BREVANTI_CORE_INTERNAL_EXPORT SettingsFile
{
public:
    using Changes = QHash<QString, QVariant>; // the value to store, or an invalid one to remove

    // Applies the changes to the settings file, fileName (QSettings().fileName()). The new file is
    // written beside it, read back and compared, and only then renamed over it (over a symbolic
    // link, not through it), with mode 0600. Returns an empty string on success, otherwise why the
    // file was left as it was.
    static QString write(const QString &fileName, const Changes &changes);

    // Whether the entry for key in the settings file is one QSettings could not decode, and so
    // reads as a string that was never stored: a value of the binary form cut short, say.
    static bool isUndecodable(const QString &fileName, const QString &key, const QVariant &read);
};

} // namespace bvt
