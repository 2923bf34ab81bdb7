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

    QStringList lines() const;
    QStringList linesStartingWith(const QString &prefix) const;
    static void clear(); // also for helpers that make the library log what a test does not check

private:
    static void handle(QtMsgType type, const QMessageLogContext &context, const QString &message);
    QtMessageHandler m_previous;
};
