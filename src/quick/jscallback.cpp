#include "jscallback.h"

#include "core/logging.h"

#include <QJSEngine>

namespace bvt::quick {

namespace {

// Called from the event loop, where nothing would report what the function threw.
void call(const QJSValue &callback, const QJSValue &argument)
{
    const QJSValue result = callback.call({argument});
    if (result.isError())
        qCWarning(lcQuick).noquote()
                << QStringLiteral("%1:%2: a callback threw %3")
                           .arg(result.property(QStringLiteral("fileName")).toString())
                           .arg(result.property(QStringLiteral("lineNumber")).toInt())
                           .arg(result.toString());
}

} // namespace

BVTSuccessBlock successCallback(const QObject *context, QJSEngine *engine, const QJSValue &callback)
{
    if (!callback.isCallable())
        return nullptr;
    return tiedTo(context, [engine, callback](const QVariant &answer) {
        call(callback, engine->toScriptValue(answer));
    });
}

BVTFailureBlock failureCallback(const QObject *context, QJSEngine *engine, const QJSValue &callback)
{
    if (!callback.isCallable())
        return nullptr;
    return tiedTo(context, [engine, callback](const QString &text) {
        call(callback, text.isNull() ? QJSValue(QJSValue::NullValue) : QJSValue(text));
    });
}

} // namespace bvt::quick
