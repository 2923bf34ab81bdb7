#pragma once

#include "core/internalexport.h"

#include <Brevanti/BVTTypes.h>

#include <QByteArray>
#include <QString>
#include <QVariant>

namespace bvt {

// An answer of the service as the library judges it: accepted only with a 2xx status, a JSON
// content type (application/json, text/json or text/javascript) and a body that parses as a JSON
// object or array. Otherwise it failed, and text holds the body (null when no answer arrived).
struct BREVANTI_CORE_INTERNAL_EXPORT JsonResponse
{
    bool accepted = false;
    QVariant object;      // the decoded object or array when accepted
    QString text;         // the body as text; null when no answer arrived
    BVTError error;       // why it was not accepted
    int status = 0;       // the HTTP status; 0 when no answer arrived
    int networkError = 0; // the QNetworkReply::NetworkError of the exchange, 0 when none

    // status 0 means no answer arrived. networkError/networkMessage describe a transport failure
    // (0/empty when there was none); a failure after the headers still keeps the body received.
    static JsonResponse judge(int status, const QByteArray &contentType, const QByteArray &body,
                              int networkError = 0, const QString &networkMessage = QString());
    static bool isJsonContentType(const QByteArray &contentType);
    static QString bodyText(const QByteArray &contentType, const QByteArray &body);
};

} // namespace bvt
