#include "walkthrough.h"

#include <Brevanti/BVT.h>

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QDir>
#include <QImage>
#include <QQuickItem>
#include <QQuickWindow>
#include <QTextStream>
#include <QTimer>

namespace {

constexpr int pollIntervalMs = 50;
constexpr int waitLimitMs = 10'000;
// Long enough for a card to finish appearing or leaving.
constexpr int settleMs = 300;

} // namespace

Walkthrough::Walkthrough(QQuickWindow *window, const QString &directory, QObject *parent)
    : QObject(parent), m_window(window), m_directory(directory)
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
    const QString ask = QStringLiteral("Ask for notifications");
    const auto card = [this] { return !shown("QQuickAbstractButton", "No Thanks").isEmpty(); };
    const auto switches = [this] { return !shown("QQuickSwitch").isEmpty(); };
    return {
            {QString(), QStringLiteral("the device identifier"),
             [] { return !BVT::currentDevice().isNull(); }, QStringLiteral("01-home")},
            {ask, QStringLiteral("the permission card"), card, QStringLiteral("02-popup")},
            {QStringLiteral("Customize Notifications"),
             QStringLiteral("the preferences in the card"), switches,
             QStringLiteral("03-customize")},
            {QStringLiteral("Done"), QStringLiteral("the card to close"),
             [switches, card] { return !switches() && !card(); }, QStringLiteral("04-after-done")},
            {ask, QStringLiteral("the permission card"), card, QString()},
            {QStringLiteral("Keep Me Updated"), QStringLiteral("the push token to be enabled"),
             [card] { return !BVT::currentDeviceToken().isNull() && !card(); },
             QStringLiteral("05-token-enabled")},
            {QStringLiteral("Notification settings"), QStringLiteral("the preferences screen"),
             switches, QStringLiteral("07-settings")},
    };
}

void Walkthrough::run(int index)
{
    if (index == m_steps.size()) {
        QCoreApplication::exit(0);
        return;
    }
    const Step step = m_steps.at(index);
    if (!step.tap.isEmpty()) {
        const QList<QQuickItem *> buttons = shown("QQuickAbstractButton", step.tap);
        if (buttons.isEmpty()) {
            fail(QStringLiteral("no %1 on screen").arg(step.tap));
            return;
        }
        // A tap, as far as the button's handlers go.
        QMetaObject::invokeMethod(buttons.first(), "clicked");
    }
    auto *poll = new QTimer(this);
    const QDeadlineTimer deadline(waitLimitMs);
    connect(poll, &QTimer::timeout, this, [this, poll, deadline, step, index] {
        if (step.ready()) {
            poll->deleteLater();
            QTimer::singleShot(settleMs, this, [this, index] { finish(index); });
        } else if (deadline.hasExpired()) {
            poll->deleteLater();
            fail(QStringLiteral("waited %1 s for %2 in vain")
                         .arg(waitLimitMs / 1000)
                         .arg(step.awaited));
        }
    });
    poll->start(pollIntervalMs);
}

void Walkthrough::finish(int index)
{
    const Step &step = m_steps.at(index);
    QString line = QStringLiteral("[%1/%2] ").arg(index + 1).arg(m_steps.size());
    if (!step.picture.isEmpty()) {
        const QString file = step.picture + QStringLiteral(".png");
        if (!m_window->grabWindow().save(QDir(m_directory).filePath(file))) {
            fail(QStringLiteral("cannot write %1 in %2").arg(file, m_directory));
            return;
        }
        line += file;
    }
    QTextStream(stdout) << line
                        << (step.tap.isEmpty() ? QString() : QStringLiteral(" after ") + step.tap)
                        << Qt::endl;
    run(index + 1);
}

void Walkthrough::fail(const QString &message)
{
    QTextStream(stderr) << "brevanti-quick-demo: " << message << Qt::endl;
    QCoreApplication::exit(1);
}

// Items on screen, the card's over the window's included (the window's root holds both); a closed
// card's are hidden.
QList<QQuickItem *> Walkthrough::shown(const char *type, const QString &text) const
{
    QList<QQuickItem *> found, below{m_window->contentItem()};
    while (!below.isEmpty()) {
        QQuickItem *item = below.takeFirst();
        if (!item->isVisible())
            continue;
        if (item->inherits(type) && (text.isNull() || item->property("text") == text))
            found << item;
        below << item->childItems();
    }
    return found;
}
