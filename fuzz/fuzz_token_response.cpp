// The token endpoint's answer as the library reads it: judged as a 200 JSON answer and, when
// accepted, read as a token, with every top-level member read as an integer as well. Any input must
// be read without a crash, and the token's expiry is always a date: its two parts are 32-bit.
#include "client/jsonresponse.h"
#include "client/tokenresponse.h"
#include "core/integervalue.h"

#include <QVariantList>
#include <QVariantMap>

#include <cstdint>
#include <cstdio>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    // A copy, as a network reply's body is, rather than a view of the fuzzer's buffer.
    const QByteArray body(reinterpret_cast<const char *>(data), qsizetype(size));
    const bvt::JsonResponse response =
            bvt::JsonResponse::judge(200, QByteArrayLiteral("application/json"), body);
    if (!response.accepted)
        return 0;
    if (!bvt::TokenResponse::read(response.object).expires.isValid()) {
        std::fprintf(stderr, "token response: no expiry date\n");
        std::abort();
    }
    // An answer may be an object or an array.
    const QVariantList members = response.object.typeId() == QMetaType::QVariantMap
            ? response.object.toMap().values()
            : response.object.toList();
    for (const QVariant &member : members)
        bvt::integerValue(member);
    return 0;
}
