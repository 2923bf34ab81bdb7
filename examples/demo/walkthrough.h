#pragma once

#include <QList>
#include <QObject>
#include <QPointer>
#include <QString>

#include <functional>

class BVTNotifySwitch;
class HomeViewController;

namespace bvt {
class Window;
}

// Goes through a first run by itself, tapping as a user would: asks for notifications, looks at
// the preferences in the card and closes it, asks again and accepts, asks a third time, flips a
// switch in the notification settings, goes back and signs in. After each step it prints a line
// and mostly saves a picture of the window; then it ends the application (status 0), or on the
// first step that does not come about within 10 s, says what it waited for and ends it (status 1).
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
        std::function<QString()> verify; // after settling: an error text, or empty; may be unset
        QString picture;                 // a file name without ".png"; empty: none
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
    QPointer<BVTNotifySwitch> m_flipped;
    bool m_flippedWasOn = false;
    QString m_flippedName;
};
