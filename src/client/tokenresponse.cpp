#include "tokenresponse.h"

#include "core/integervalue.h"
#include "core/log.h"

#include <QVariantMap>

namespace bvt {

TokenResponse TokenResponse::read(const QVariant &answer)
{
    const QVariantMap members = answer.toMap();
    TokenResponse token;
    const QVariant accessToken = members.value(QStringLiteral("access_token"));
    if (accessToken.isValid() && !accessToken.isNull())
        token.accessToken = accessToken.typeId() == QMetaType::QString ? accessToken.toString()
                                                                       : describe(accessToken);
    const qint64 created = integerValue(members.value(QStringLiteral("created_at")));
    const qint64 lifetime = integerValue(members.value(QStringLiteral("expires_in")));
    token.expires = QDateTime::fromSecsSinceEpoch(created + lifetime, Qt::UTC);
    return token;
}

} // namespace bvt
