#include "walkthrough.h"

#include "homeviewcontroller.h"

#include <Brevanti/BVT.h>
#include <Brevanti/BVTNotifySwitch.h>
#include <Brevanti/platform/NavigationController.h>
#include <Brevanti/platform/Window.h>

#include <QAction>
#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QDir>
#include <QPushButton>
#include <QTextStream>
#include <QTimer>
#include <QToolButton>

#include <algorithm>

namespace {

constexpr int pollIntervalMs = 50;
constexpr int waitLimitMs = 10'000;
// Long enough for a card to finish appearing or leaving and for a switch's request to be answered.
constexpr int settleMs = 300;

// The library's card and the demo's home screen name their buttons.
const QString keepMeUpdated = QStringLiteral("keepMeUpdatedButton");
const QString customize = QStringLiteral("customizeButton");
const QString ask = QStringLiteral("askButton");
const QString settings = QStringLiteral("settingsButton");
const QString signIn = QStringLiteral("signInButton");

// Dismissed cards linger, hidden, until they are deleted; only what is on screen counts.
template<typename T>
QList<T *> visibleChildren(QWidget *root, const QString &name = QString())
{
    QList<T *> visible;
    for (T *child : root->findChildren<T *>(name)) {
        if (child->isVisible())
            visible.append(child);
    }
    return visible;
}

bool cardShown(QWidget *root)
{
    return !visibleChildren<QPushButton>(root, keepMeUpdated).isEmpty();
}

bool preferencesShown(QWidget *root)
{
    return !visibleChildren<BVTNotifySwitch>(root).isEmpty();
}

} // namespace

Walkthrough::Walkthrough(bvt::Window *window, HomeViewController *home, const QString &directory,
                         QObject *parent)
    : QObject(parent), m_window(window), m_home(home), m_directory(directory)
{ }

void Walkthrough::start()
{
    if (!QDir().mkpath(m_directory)) {
        fail(QStringLiteral("cannot make the directory %1").arg(m_directory));
        return;
    }
    m_steps = steps();
    run(0);
}

QList<Walkthrough::Step> Walkthrough::steps()
{
    const auto always = [] { return true; };
    const auto clicking = [this](const QString &name) {
        return [this, name] { return click(name); };
    };
    const auto card = [this] { return cardShown(root()); };
    const auto preferences = [this] { return preferencesShown(root()); };
    const auto text = [](const QString &line) { return [line] { return line; }; };
    return {
            {[] { return QString(); }, QStringLiteral("the device identifier"),
             [] { return !BVT::currentDevice().isNull(); }, QStringLiteral("01-home"),
             [] { return QStringLiteral("the home screen, device %1").arg(BVT::currentDevice()); }},
            {clicking(ask), QStringLiteral("the permission card"), card, QStringLiteral("02-popup"),
             text(QStringLiteral("Ask for notifications: the card"))},
            {clicking(customize), QStringLiteral("the preferences in the card"), preferences,
             QStringLiteral("03-customize"),
             text(QStringLiteral("Customize Notifications: the preferences, in the card"))},
            // Switching a preference would ask for push permission at once, so this first visit
            // only looks; Keep Me Updated is left to ask.
            {[this] { return clickDone(); }, QStringLiteral("the card to close"),
             [this] { return !cardShown(root()) && !preferencesShown(root()); },
             QStringLiteral("04-after-done"), text(QStringLiteral("Done: the card is gone"))},
            {clicking(ask), QStringLiteral("the permission card"), card, QString(),
             text(QStringLiteral("Ask for notifications again: the card is back"))},
            {clicking(keepMeUpdated), QStringLiteral("the push token to be enabled"),
             [this] { return !BVT::currentDeviceToken().isNull() && !cardShown(root()); },
             QStringLiteral("05-token-enabled"),
             text(QStringLiteral("Keep Me Updated: the stand-in system handed over a token, which "
                                 "the demo enabled"))},
            {clicking(ask), QStringLiteral("the request to be handled"), always,
             QStringLiteral("06-popup-not-shown"),
             text(QStringLiteral("Ask for notifications a third time: a token is stored, so no "
                                 "card"))},
            {clicking(settings), QStringLiteral("the preferences screen"), preferences,
             QStringLiteral("07-settings"),
             text(QStringLiteral("Notification settings: the preferences, on the navigation "
                                 "stack"))},
            {[this] { return flipTopSwitch(); }, QStringLiteral("the switch to be flipped"), always,
             QStringLiteral("08-switch-flipped"),
             [this] {
                 return QStringLiteral("switched %1 %2")
                         .arg(m_flippedName,
                              m_flippedWasOn ? QStringLiteral("off") : QStringLiteral("on"));
             }},
            {[this] { return clickDone(); }, QStringLiteral("the home screen"),
             [this] { return !preferencesShown(root()); }, QString(),
             text(QStringLiteral("Done: back home"))},
            {clicking(signIn), QStringLiteral("the user to be signed in"),
             [] { return !BVT::currentUser().isNull(); }, QStringLiteral("09-signed-in"),
             [] { return QStringLiteral("Sign in: the device is %1's").arg(BVT::currentUser()); }},
    };
}

void Walkthrough::run(int index)
{
    if (index == m_steps.size()) {
        QCoreApplication::exit(0);
        return;
    }
    const Step &step = m_steps.at(index);
    const QString error = step.act();
    if (!error.isEmpty()) {
        fail(error);
        return;
    }
    waitUntil(step.awaited, step.ready, [this, index] {
        QTimer::singleShot(settleMs, this, [this, index] { finish(index); });
    });
}

void Walkthrough::finish(int index)
{
    const Step &step = m_steps.at(index);
    QString line = QStringLiteral("[%1/%2] ").arg(index + 1).arg(m_steps.size());
    if (!step.picture.isEmpty()) {
        // The labels show the last state, not the one of the timer's last round.
        if (m_home)
            m_home->refresh();
        const QString file = step.picture + QStringLiteral(".png");
        if (!m_window->widget()->grab().save(QDir(m_directory).filePath(file))) {
            fail(QStringLiteral("cannot write %1 in %2").arg(file, m_directory));
            return;
        }
        line += file + QStringLiteral(": ");
    }
    QTextStream(stdout) << line << step.report() << Qt::endl;
    run(index + 1);
}

void Walkthrough::waitUntil(const QString &awaited, const std::function<bool()> &ready,
                            const std::function<void()> &then)
{
    auto *poll = new QTimer(this);
    poll->setInterval(pollIntervalMs);
    const QDeadlineTimer deadline(waitLimitMs);
    connect(poll, &QTimer::timeout, this, [this, poll, deadline, awaited, ready, then] {
        if (ready()) {
            poll->stop();
            poll->deleteLater();
            then();
        } else if (deadline.hasExpired()) {
            poll->stop();
            poll->deleteLater();
            fail(QStringLiteral("waited %1 s for %2 in vain").arg(waitLimitMs / 1000).arg(awaited));
        }
    });
    poll->start();
}

void Walkthrough::fail(const QString &message)
{
    QTextStream(stderr) << "brevanti-demo: " << message << Qt::endl;
    QCoreApplication::exit(1);
}

QWidget *Walkthrough::root() const
{
    return m_window->widget();
}

QString Walkthrough::click(const QString &buttonName)
{
    const QList<QPushButton *> buttons = visibleChildren<QPushButton>(root(), buttonName);
    if (buttons.isEmpty())
        return QStringLiteral("no %1 on screen").arg(buttonName);
    buttons.first()->click();
    return QString();
}

QString Walkthrough::flipTopSwitch()
{
    QList<BVTNotifySwitch *> switches = visibleChildren<BVTNotifySwitch>(root());
    if (switches.isEmpty())
        return QStringLiteral("no preference switch on screen");
    const auto top = [this](QWidget *widget) { return widget->mapTo(root(), QPoint()).y(); };
    std::sort(switches.begin(), switches.end(),
              [&top](QWidget *a, QWidget *b) { return top(a) < top(b); });
    BVTNotifySwitch *flipped = switches.first();
    m_flippedWasOn = flipped->isOn();
    m_flippedName = flipped->category() + QLatin1Char('/') + flipped->preference();
    flipped->click();
    return QString();
}

QString Walkthrough::clickDone()
{
    for (QToolButton *button : visibleChildren<QToolButton>(root())) {
        if (button->defaultAction() && button->defaultAction()->text() == QLatin1String("Done")) {
            button->click();
            return QString();
        }
    }
    return QStringLiteral("no Done button on screen");
}
