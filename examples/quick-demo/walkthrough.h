#pragma once

#include <QList>
#include <QObject>
#include <QString>

#include <functional>

class QQuickItem;
class QQuickWindow;

// A guided tour for the README's pictures, not a test: it taps through a first run as a user would
// (asks for notifications, looks at the preferences in the card and closes it, asks again and
// accepts, opens the notification settings), saving a picture of the window after each step. It
// ends the application when done (status 0), or when a step's screen does not come within 10 s
// (status 1), so that a script running it offscreen never hangs.
class Walkthrough : public QObject
{
    Q_OBJECT
public:
    Walkthrough(QQuickWindow *window, const QString &directory, QObject *parent = nullptr);

    void start(); // from the event loop, which must be running for the steps to happen

private:
    struct Step
    {
        QString tap;     // a shown button's text; empty: none
        QString awaited; // said when it does not come
        std::function<bool()> ready;
        QString picture; // a file name without ".png"; empty: none
    };

    QList<Step> steps();
    void run(int index);
    void finish(int index);
    void fail(const QString &message);
    QList<QQuickItem *> shown(const char *type, const QString &text = QString()) const;

    QQuickWindow *m_window;
    QString m_directory;
    QList<Step> m_steps;
};
