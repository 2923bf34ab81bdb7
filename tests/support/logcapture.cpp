#include "logcapture.h"

#include <cstring>

static QtMessageHandler previousHandler = nullptr;

LogCapture::LogCapture() : m_previous(qInstallMessageHandler(&LogCapture::handle))
{
    previousHandler = m_previous;
    s_lines.clear();
}

LogCapture::~LogCapture()
{
    qInstallMessageHandler(m_previous);
    previousHandler = nullptr;
}

QStringList LogCapture::linesStartingWith(const QString &prefix) const
{
    QStringList matching = s_lines;
    matching.removeIf([&prefix](const QString &line) { return !line.startsWith(prefix); });
    return matching;
}

void LogCapture::handle(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    if (type == QtInfoMsg && context.category && std::strcmp(context.category, "default") == 0) {
        s_lines.append(message);
        return;
    }
    if (previousHandler)
        previousHandler(type, context, message);
}
