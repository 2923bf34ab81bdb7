#pragma once

#include "core/internalexport.h"

#include <QByteArray>
#include <QVariant>
#include <QVariantMap>

namespace bvt {

// Writes parameters as application/x-www-form-urlencoded text, as the service expects them in a
// query string or a request body:
// - pairs "key=value" joined by "&", keys in ascending order at every level;
// - a nested map becomes bracketed keys (outer[inner]=value), a list empty brackets (key[]=value);
// - keys and values are UTF-8, percent-escaped except for the unreserved characters
//   (letters, digits, "-", ".", "_", "~") and "?" and "/"; the brackets that the nesting adds are
//   written as they are, brackets inside a key's own text are escaped;
// - a null value writes the key alone; numbers are written in decimal.
class BREVANTI_CORE_INTERNAL_EXPORT FormEncoder
{
public:
    static QByteArray encode(const QVariantMap &parameters);
    static QByteArray escape(const QString &text);

private:
    static void appendValue(QByteArrayList &pairs, const QByteArray &key, const QVariant &value);
};

} // namespace bvt
