#include "logcapture.h"

#include <cstring>

namespace {
QStringList capturedLines;
QtMessageHandler previousHandler = nullptr;
} // namespace

LogCapture::LogCapture() : m_previous(qInstallMessageHandler(&LogCapture::handle))
{
    previousHandler = m_previous;
    capturedLines.clear();
}

LogCapture::~LogCapture()
{
    qInstallMessageHandler(m_previous);
    previousHandler = nullptr;
}

QStringList LogCapture::lines() const
{
    return capturedLines;
}

QStringList LogCapture::linesStartingWith(const QString &prefix) const
{
    QStringList matching = capturedLines;
    matching.removeIf([&prefix](const QString &line) { return !line.startsWith(prefix); });
    return matching;
}

void LogCapture::clear()
{
    capturedLines.clear();
}

void LogCapture::handle(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    if (type == QtInfoMsg && context.category && std::strcmp(context.category, "default") == 0) {
        capturedLines.append(message);
        return;
    }
    if (previousHandler)
        previousHandler(type, context, message);
}
