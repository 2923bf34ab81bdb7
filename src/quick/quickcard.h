#pragma once

#include <QObject>
#include <QPointer>
#include <QQuickWindow>

class QQmlEngine;

namespace bvt {
struct CardRequest;
}

namespace bvt::quick {

// Where the QML permission card shows: the window QML named (BVTNotify.window), else the
// application's first Qt Quick window.
QPointer<QQuickWindow> &cardWindow();

// Shows the QML permission card made by engine; the client's cardFinished tells how it ended.
void showCard(QQmlEngine *engine, const CardRequest &request);

// Lets BVTNotify::requestCustomPreferences show the QML card, made by engine, in a host without
// Qt Widgets; each of the module's singletons does so as an engine makes it.
void installQuickCard(QQmlEngine *engine);

// Tells the client how a card the library showed ended.
class CardOutcomeRelay : public QObject
{
    Q_OBJECT
public:
    using QObject::QObject;
public Q_SLOTS:
    void relay(int outcome);
};

} // namespace bvt::quick
