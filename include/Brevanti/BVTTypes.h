#pragma once

/// \file
/// The types of the service's calls: parameters, callbacks and errors, and bvt::tiedTo.

#include <Brevanti/brevanti_core_export.h>

#include <QPointer>
#include <QString>
#include <QVariant>
#include <QVariantMap>

#include <functional>
#include <utility>

/// Parameters of a service call: string keys to QString values or to nested BVTParameters.
using BVTParameters = QVariantMap;

/// Called with the decoded JSON answer: a QVariantMap or a QVariantList.
using BVTSuccessBlock = std::function<void(const QVariant &response)>;

/// Called with the failed answer's body as text; a null QString when no answer arrived.
using BVTFailureBlock = std::function<void(const QString &responseText)>;

/// Why a request failed: the HTTP status when an answer arrived, otherwise the network error
/// (a QNetworkReply::NetworkError value), and a sentence saying what went wrong.
struct BREVANTI_CORE_EXPORT BVTError
{
    int code = 0;    ///< the HTTP status, or the QNetworkReply::NetworkError value
    QString message; ///< what went wrong, as a sentence
};

/// Called when no access token can be had.
using BVTErrorBlock = std::function<void(const BVTError &error)>;

/// The library's own names beside the BVT classes: the platform layer under the screens and the
/// helpers a host uses with the service's calls.
namespace bvt {

/// Ties a callback to a QObject, as QObject::connect and QTimer::singleShot do with their context:
/// once the context is destroyed the callback is no longer run. It still goes, with whatever it
/// captured, when the call ends. Usable as any of the callback types above:
///
///     BVTNotify::getPreferences(bvt::tiedTo(this, [this](const QVariant &document) { … }));
template<typename Callback>
auto tiedTo(const QObject *context, Callback &&callback)
{
    return [context = QPointer<const QObject>(context),
            callback = std::forward<Callback>(callback)](const auto &...arguments) {
        if (context)
            callback(arguments...);
    };
}

} // namespace bvt
