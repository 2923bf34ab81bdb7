#include "framing.h"

#include <algorithm>

namespace bvtsim {

namespace {

// The comma-separated members of every header called name, trimmed, in order.
QByteArrayList members(const Headers &headers, const QByteArray &name)
{
    QByteArrayList found;
    for (const auto &[headerName, value] : headers) {
        if (headerName.compare(name, Qt::CaseInsensitive) != 0)
            continue;
        for (const QByteArray &member : value.split(','))
            found.append(member.trimmed());
    }
    return found;
}

bool isLength(const QByteArray &value)
{
    bool fits = false;
    value.toLongLong(&fits);
    // Digits alone: toLongLong would also take a sign.
    return fits
            && std::all_of(value.begin(), value.end(), [](char c) { return c >= '0' && c <= '9'; });
}

} // namespace

QByteArray headerValue(const Headers &headers, const QByteArray &name)
{
    for (const auto &[headerName, value] : headers) {
        if (headerName.compare(name, Qt::CaseInsensitive) == 0)
            return value;
    }
    return QByteArray();
}

QString framingProblem(const Headers &headers)
{
    const QByteArrayList lengths = members(headers, "Content-Length");
    if (lengths.isEmpty())
        return QString();
    if (!members(headers, "Transfer-Encoding").isEmpty())
        return QStringLiteral("Content-Length and Transfer-Encoding together.");
    for (const QByteArray &length : lengths) {
        if (!isLength(length))
            return QStringLiteral("Content-Length %1 is not a length.")
                    .arg(QString::fromLatin1(length));
        if (length != lengths.first())
            return QStringLiteral("Content-Length is given as both %1 and %2.")
                    .arg(QString::fromLatin1(lengths.first()), QString::fromLatin1(length));
    }
    return QString();
}

bool wantsClose(const Headers &headers)
{
    const QByteArrayList options = members(headers, "Connection");
    return std::any_of(options.begin(), options.end(), [](const QByteArray &option) {
        return option.compare("close", Qt::CaseInsensitive) == 0;
    });
}

} // namespace bvtsim
