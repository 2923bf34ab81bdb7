#include "quickcard.h"

#include "core/logging.h"
#include "core/screens.h"

#include <Brevanti/Client.h>

#include <QColor>
#include <QGuiApplication>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickItem>

namespace bvt::quick {

QPointer<QQuickWindow> &cardWindow()
{
    static QPointer<QQuickWindow> window;
    return window;
}

void showCard(QQmlEngine *engine, const CardRequest &request)
{
    QQuickWindow *shownIn = cardWindow();
    const QWindowList windows = QGuiApplication::topLevelWindows();
    for (auto window = windows.cbegin(); !shownIn && window != windows.cend(); ++window)
        shownIn = qobject_cast<QQuickWindow *>(*window);
    if (!shownIn || !engine) {
        qCWarning(lcQuick, "No Qt Quick window to show the permission card in; nothing is shown");
        Q_EMIT Client::instance()->cardFinished(Client::CardNotShown);
        return;
    }
    QQmlComponent component(
            engine,
            QUrl(QStringLiteral("qrc:/qt-project.org/imports/Brevanti/PermissionCard.qml")));
    // A colour QML gave as a name is made a colour here; null stays none.
    const QColor color = request.color.isNull() ? QColor() : request.color.value<QColor>();
    QObject *card = component.createWithInitialProperties(
            {{QStringLiteral("parent"), QVariant::fromValue(shownIn->contentItem())},
             {QStringLiteral("color"), color},
             {QStringLiteral("icon"), request.icon},
             {QStringLiteral("header"), request.header},
             {QStringLiteral("subHeader"), request.subHeader}});
    if (!card) {
        qCWarning(lcQuick).noquote() << component.errorString();
        return;
    }
    card->setObjectName(QStringLiteral("brevantiPermissionCard"));
    card->setParent(shownIn); // goes with its window at the latest
    QObject::connect(card, SIGNAL(closed()), card, SLOT(deleteLater()));
    QObject::connect(card, SIGNAL(ended(int)), new CardOutcomeRelay(card), SLOT(relay(int)));
    QMetaObject::invokeMethod(card, "open");
}

void installQuickCard(QQmlEngine *engine)
{
    installCardPresenter(engine,
                         [engine](const CardRequest &request) { showCard(engine, request); });
}

void CardOutcomeRelay::relay(int outcome)
{
    Q_EMIT Client::instance()->cardFinished(Client::CardOutcome(outcome));
}

} // namespace bvt::quick
