#pragma once

#include <QDateTime>
#include <QString>
#include <QVariant>

namespace bvt {

// What the library reads of the token endpoint's answer; every other member is ignored, and
// nothing is checked: a missing "access_token" gives a null token, a missing or unreadable
// "created_at" or "expires_in" reads as 0.
struct TokenResponse
{
    QString accessToken;
    QDateTime expires; // "created_at" + "expires_in" seconds after the epoch, in UTC

    static TokenResponse read(const QVariant &answer);

    // A member read as a 32-bit signed integer: numbers are cut to whole numbers, numeric text is
    // read up to its first non-digit, both clamped to the 32-bit range; anything else is 0.
    static qint32 readInt32(const QVariant &value);
};

} // namespace bvt
