#pragma once

#include <Brevanti/BVTTypes.h>

#include <QJSEngine>
#include <QJSValue>

#include <stdexcept>

namespace bvt::quick {

// A QML caller's optional callback as one of the library's: it is called with the decoded answer,
// or with the failure text (null when no answer arrived), made JavaScript values of the engine.
// It runs only while context lives; context must not outlive the engine. Anything but a function
// gives no callback.
BVTSuccessBlock successCallback(const QObject *context, QJSEngine *engine,
                                const QJSValue &callback);
BVTFailureBlock failureCallback(const QObject *context, QJSEngine *engine,
                                const QJSValue &callback);

// Makes a described call that may refuse its argument: an exception must not cross the QML engine,
// so the caller gets it as a JavaScript error.
template<typename Call>
void refusable(QJSEngine *engine, Call &&call)
{
    try {
        call();
    } catch (const std::invalid_argument &error) {
        engine->throwError(QString::fromUtf8(error.what()));
    }
}

} // namespace bvt::quick
