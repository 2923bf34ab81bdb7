#include "jsonresponse.h"

#include <QJsonDocument>
#include <QJsonParseError>
#include <QStringDecoder>

namespace bvt {

namespace {

QByteArray mediaType(const QByteArray &contentType)
{
    const qsizetype semicolon = contentType.indexOf(';');
    return (semicolon < 0 ? contentType : contentType.left(semicolon)).trimmed().toLower();
}

QByteArray charset(const QByteArray &contentType)
{
    for (const QByteArray &parameter : contentType.split(';').mid(1)) {
        const QByteArray trimmed = parameter.trimmed();
        if (trimmed.toLower().startsWith("charset="))
            return trimmed.mid(8).trimmed().replace('"', QByteArray());
    }
    return QByteArray();
}

} // namespace

bool JsonResponse::isJsonContentType(const QByteArray &contentType)
{
    const QByteArray type = mediaType(contentType);
    return type == "application/json" || type == "text/json" || type == "text/javascript";
}

QString JsonResponse::bodyText(const QByteArray &contentType, const QByteArray &body)
{
    const QByteArray name = charset(contentType);
    if (!name.isEmpty()) {
        QStringDecoder decoder(name.constData());
        if (decoder.isValid())
            return decoder.decode(body);
    }
    return QString::fromUtf8(body);
}

JsonResponse JsonResponse::judge(int status, const QByteArray &contentType, const QByteArray &body,
                                 int networkError, const QString &networkMessage)
{
    JsonResponse response;
    response.status = status;
    response.networkError = networkError;
    const auto fail = [&](int code, const QString &message) {
        response.error = {code, message};
        if (status != 0) {
            // An answer arrived, so its text is never null, even when the body is empty.
            response.text = bodyText(contentType, body);
            if (response.text.isNull())
                response.text = QLatin1String("");
        }
        return response;
    };
    if (status == 0)
        return fail(networkError, networkMessage);
    if (status < 200 || status > 299)
        return fail(status, QStringLiteral("Request failed: status %1").arg(status));
    if (networkError != 0)
        return fail(networkError, networkMessage);
    if (!isJsonContentType(contentType))
        return fail(status,
                    QStringLiteral("Request failed: unacceptable content-type: %1")
                            .arg(QString::fromLatin1(mediaType(contentType))));
    QJsonParseError parseError;
    const QJsonDocument document = QJsonDocument::fromJson(body, &parseError);
    if (parseError.error != QJsonParseError::NoError || document.isNull())
        return fail(status,
                    QStringLiteral("Request failed: the answer is not JSON (%1 at offset %2)")
                            .arg(parseError.errorString())
                            .arg(parseError.offset));
    response.accepted = true;
    response.object = document.toVariant();
    return response;
}

} // namespace bvt
