#include "log.h"

#include <Brevanti/Logging.h>

#include <QJsonDocument>
#include <QLoggingCategory>
#include <QtDebug>

namespace bvt {

namespace {
const QString nilText = QStringLiteral("(null)");

LogHandler &logHandler()
{
    static LogHandler handler;
    return handler;
}
} // namespace

void setLogHandler(LogHandler handler)
{
    logHandler() = std::move(handler);
}

QString describe(const QString &value)
{
    return value.isNull() ? nilText : value;
}

QString describe(const QDateTime &value)
{
    if (value.isNull())
        return nilText;
    return value.toUTC().toString(QStringLiteral("yyyy-MM-dd HH:mm:ss")) + QStringLiteral(" +0000");
}

QString describe(const BVTError &error)
{
    return error.message;
}

QString describe(const QVariant &value)
{
    if (!value.isValid() || value.isNull())
        return nilText;
    switch (value.typeId()) {
    case QMetaType::QVariantMap:
    case QMetaType::QVariantHash:
    case QMetaType::QVariantList:
    case QMetaType::QStringList:
        return QString::fromUtf8(QJsonDocument::fromVariant(value).toJson(QJsonDocument::Compact));
    case QMetaType::QDateTime:
        return describe(value.toDateTime());
    case QMetaType::Bool:
        return value.toBool() ? QStringLiteral("1") : QStringLiteral("0");
    default:
        return value.toString();
    }
}

QString formatLine(const char *format, const QStringList &arguments)
{
    // The formats are the library's own texts, all ASCII: read as they are, not converted.
    const QLatin1String pattern(format);
    const QLatin1String marker("%@");
    qsizetype length = pattern.size();
    for (const QString &argument : arguments)
        length += argument.size();
    QString line;
    line.reserve(length);
    qsizetype next = 0;
    qsizetype from = 0;
    for (qsizetype at = pattern.indexOf(marker); at >= 0; at = pattern.indexOf(marker, from)) {
        line += pattern.mid(from, at - from);
        line += next < arguments.size() ? arguments.at(next++) : nilText;
        from = at + 2;
    }
    line += pattern.mid(from);
    return line;
}

bool lineWanted()
{
    return logHandler() || QLoggingCategory::defaultCategory()->isInfoEnabled();
}

void writeLine(const QString &line)
{
    if (const LogHandler &handler = logHandler()) {
        handler(line);
        return;
    }
    // As qInfo() in the default category would, without formatting the line a second time.
    if (!QLoggingCategory::defaultCategory()->isInfoEnabled())
        return;
    QMessageLogContext context;
    context.category = QLoggingCategory::defaultCategory()->categoryName();
    qt_message_output(QtInfoMsg, context, line);
}

} // namespace bvt
