#pragma once

#include "core/internalexport.h"

#include <QDateTime>
#include <QString>
#include <QVariant>

namespace bvt {

// What the library reads of the token endpoint's answer; every other member is ignored, and
// nothing is checked: a missing "access_token" gives a null token, a missing or unreadable
// "created_at" or "expires_in" reads as 0.
struct BREVANTI_CORE_INTERNAL_EXPORT TokenResponse
{
    QString accessToken;
    QDateTime expires; // "created_at" + "expires_in" seconds after the epoch, in UTC

    static TokenResponse read(const QVariant &answer);
};

} // namespace bvt
