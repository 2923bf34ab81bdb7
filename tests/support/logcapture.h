#pragma once

#include <QStringList>
#include <QtGlobal>

// Collects the library's log lines (info messages of Qt's default category) while it exists;
// every other message goes on to the handler that was installed before.
class LogCapture
{
public:
    LogCapture();
    ~LogCapture();
    LogCapture(const LogCapture &) = delete;
    LogCapture &operator=(const LogCapture &) = delete;

    QStringList lines() const { return s_lines; }
    QStringList linesStartingWith(const QString &prefix) const;
    // Also for helpers that make the library log what a test does not check.
    static void clear() { s_lines.clear(); }

private:
    static inline QStringList s_lines;
    static void handle(QtMsgType type, const QMessageLogContext &context, const QString &message);
    QtMessageHandler m_previous;
};
