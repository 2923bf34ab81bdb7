#pragma once

#include <Brevanti/Client.h>
#include <Brevanti/Reply.h>

#include <QtQml/qqml.h>
#include <QtQml/qqmlregistration.h>

class QJSEngine;
class QQmlEngine;

namespace bvt::quick {

/// The library's one client, bvt::Client::instance(): its properties, its calls that return
/// replies, the card's outcome (Brevanti.CardDeclined and the other CardOutcome values). Once an
/// engine made it, the permission card that BVTNotify::requestCustomPreferences asks for in a host
/// without Qt Widgets shows in that engine's window.
struct ClientSingleton
{
    Q_GADGET
    QML_FOREIGN(bvt::Client)
    QML_NAMED_ELEMENT(Brevanti)
    QML_SINGLETON
public:
    static Client *create(QQmlEngine *qmlEngine, QJSEngine *engine);
};

/// The reply that each call of Brevanti returns; it finishes exactly once. Made by those calls,
/// never by QML.
struct ReplyForeign
{
    Q_GADGET
    QML_FOREIGN(bvt::Reply)
    QML_NAMED_ELEMENT(Reply)
    QML_UNCREATABLE("Replies come from the calls of Brevanti, the library's client.")
};

} // namespace bvt::quick
