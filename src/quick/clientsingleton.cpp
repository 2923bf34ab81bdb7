#include "clientsingleton.h"

#include "quickcard.h"

#include <QJSEngine>
#include <QQmlEngine>

namespace bvt::quick {

Client *ClientSingleton::create(QQmlEngine *qmlEngine, QJSEngine *)
{
    Client *client = Client::instance();
    // The library's, living on after any engine.
    QJSEngine::setObjectOwnership(client, QJSEngine::CppOwnership);
    installQuickCard(qmlEngine);
    return client;
}

} // namespace bvt::quick
