#pragma once

#include <Brevanti/brevanti_core_export.h>

#include <Brevanti/BVTTypes.h>

#include <QDateTime>
#include <QString>
#include <QStringList>
#include <QVariant>

namespace bvt {

// The text that stands for a value in a log line: strings as they are, numbers in decimal, nil as
// "(null)", maps and lists as compact JSON, dates as "yyyy-MM-dd HH:mm:ss +0000" in UTC, errors as
// their message.
BREVANTI_CORE_EXPORT QString describe(const QVariant &value);
BREVANTI_CORE_EXPORT QString describe(const QString &value);
BREVANTI_CORE_EXPORT QString describe(const QDateTime &value);
BREVANTI_CORE_EXPORT QString describe(const BVTError &error);
inline QString describe(const char *value)
{
    return value ? QString::fromUtf8(value) : describe(QVariant());
}

// Fills each "%@" of format, in order, with the next argument's description.
BREVANTI_CORE_EXPORT QString formatLine(const char *format, const QStringList &arguments);

// Writes one line to the system log (Qt's default category, info level, nothing added).
BREVANTI_CORE_EXPORT void writeLine(const QString &line);
// Whether a line written now would reach anyone: a log handler is set, or the default category's
// info lines are on.
BREVANTI_CORE_EXPORT bool lineWanted();

template<typename... Args>
void log(const char *format, const Args &...args)
{
    // A line nobody reads is not composed either (describing a map means encoding it as JSON).
    if (lineWanted())
        writeLine(formatLine(format, QStringList{describe(args)...}));
}

} // namespace bvt
