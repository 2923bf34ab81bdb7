#pragma once

#include <QList>
#include <QObject>
#include <QPointer>
#include <QString>

#include <functional>

class HomeViewController;

namespace bvt {
class Window;
}

// A guided tour for the README's pictures, not a test: it taps through a first run as a user would
// (asks for notifications, looks at the preferences in the card and closes it, asks again and
// accepts, asks a third time, flips a switch in the notification settings, goes back and signs
// in), printing a line and mostly saving a picture of the window after each step. It ends the
// application when done (status 0), or when a step's screen does not come within 10 s (status 1),
// so that a script running it offscreen never hangs.
class Walkthrough : public QObject
{
    Q_OBJECT
public:
    Walkthrough(bvt::Window *window, HomeViewController *home, const QString &directory,
                QObject *parent = nullptr);

    void start(); // from the event loop, which must be running for the steps to happen

private:
    struct Step
    {
        std::function<QString()> act; // an error text, or empty
        QString awaited;
        std::function<bool()> ready;
        QString picture; // a file name without ".png"; empty: none
        std::function<QString()> report;
    };

    QList<Step> steps();
    void run(int index);
    void finish(int index);
    void waitUntil(const QString &awaited, const std::function<bool()> &ready,
                   const std::function<void()> &then);
    void fail(const QString &message);

    QWidget *root() const;
    QString click(const QString &buttonName);
    QString flipTopSwitch();
    QString clickDone();

    bvt::Window *m_window;
    QPointer<HomeViewController> m_home;
    QString m_directory;
    QList<Step> m_steps;
    bool m_flippedWasOn = false;
    QString m_flippedName;
};
