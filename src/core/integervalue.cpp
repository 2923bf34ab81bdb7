#include "integervalue.h"

#include <cmath>
#include <limits>

namespace bvt {

namespace {

qint32 clampToInt32(double value)
{
    if (std::isnan(value))
        return 0;
    if (value >= double(std::numeric_limits<qint32>::max()))
        return std::numeric_limits<qint32>::max();
    if (value <= double(std::numeric_limits<qint32>::min()))
        return std::numeric_limits<qint32>::min();
    return qint32(value);
}

qint32 leadingInt32(const QString &text)
{
    qsizetype at = 0;
    while (at < text.size() && text.at(at).isSpace())
        ++at;
    bool negative = false;
    if (at < text.size() && (text.at(at) == u'-' || text.at(at) == u'+'))
        negative = text.at(at++) == u'-';
    qint64 magnitude = 0;
    for (; at < text.size() && text.at(at) >= u'0' && text.at(at) <= u'9'; ++at) {
        magnitude = magnitude * 10 + (text.at(at).unicode() - u'0');
        if (magnitude > qint64(std::numeric_limits<qint32>::max()) + 1)
            break;
    }
    return clampToInt32(double(negative ? -magnitude : magnitude));
}

} // namespace

qint32 integerValue(const QVariant &value)
{
    switch (value.typeId()) {
    case QMetaType::Double:
    case QMetaType::Float:
        return clampToInt32(std::trunc(value.toDouble()));
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Bool:
        return clampToInt32(value.toDouble());
    case QMetaType::QString:
        return leadingInt32(value.toString());
    default:
        return 0;
    }
}

} // namespace bvt
