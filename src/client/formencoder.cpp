#include "formencoder.h"

#include "core/log.h"

#include <algorithm>

namespace bvt {

QByteArray FormEncoder::escape(const QString &text)
{
    // "?" and "/" are allowed in a query component and read more easily unescaped.
    return text.toUtf8().toPercentEncoding(QByteArrayLiteral("?/"));
}

QByteArray FormEncoder::encode(const QVariantMap &parameters)
{
    QByteArrayList pairs;
    // QVariantMap is ordered by QString::operator<, i.e. by UTF-16 code units.
    for (auto it = parameters.cbegin(); it != parameters.cend(); ++it)
        appendValue(pairs, escape(it.key()), it.value());
    return pairs.join('&');
}

void FormEncoder::appendValue(QByteArrayList &pairs, const QByteArray &key, const QVariant &value)
{
    switch (value.typeId()) {
    case QMetaType::QVariantMap: {
        const QVariantMap map = value.toMap();
        for (auto it = map.cbegin(); it != map.cend(); ++it)
            appendValue(pairs, key + '[' + escape(it.key()) + ']', it.value());
        return;
    }
    case QMetaType::QVariantHash: {
        const QVariantHash hash = value.toHash();
        QStringList keys = hash.keys();
        std::sort(keys.begin(), keys.end());
        for (const QString &inner : std::as_const(keys))
            appendValue(pairs, key + '[' + escape(inner) + ']', hash.value(inner));
        return;
    }
    case QMetaType::QVariantList:
    case QMetaType::QStringList:
        for (const QVariant &element : value.toList())
            appendValue(pairs, key + "[]", element);
        return;
    default:
        if (!value.isValid() || value.isNull())
            pairs.append(key);
        else
            pairs.append(key + '=' + escape(describe(value)));
    }
}

} // namespace bvt
