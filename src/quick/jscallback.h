#pragma once

#include <Brevanti/BVTTypes.h>

#include <QJSValue>

class QJSEngine;

namespace bvt::quick {

// A QML caller's optional callback as one of the library's: it is called with the decoded answer,
// or with the failure text (null when no answer arrived), made JavaScript values of the engine.
// It runs only while context lives; context must not outlive the engine. Anything but a function
// gives no callback.
BVTSuccessBlock successCallback(const QObject *context, QJSEngine *engine,
                                const QJSValue &callback);
BVTFailureBlock failureCallback(const QObject *context, QJSEngine *engine,
                                const QJSValue &callback);

} // namespace bvt::quick
