#pragma once

#include <QByteArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QList>
#include <QPair>
#include <QString>

namespace bvtsim {

// What a route answers; the service serialises the body as compact JSON.
struct Answer
{
    int status = 200;
    QJsonDocument body;
    QList<QPair<QByteArray, QByteArray>> headers = {}; // sent after Content-Type and Content-Length
};

// The service's JSON error: {"error": code, "message": message}.
inline Answer error(int status, const char *code, const QString &message)
{
    return {status,
            QJsonDocument(QJsonObject{{"error", QLatin1String(code)}, {"message", message}})};
}

} // namespace bvtsim
