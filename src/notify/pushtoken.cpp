#include <Brevanti/BVTNotify.h>

#include "client/callbacks.h"
#include "client/clientprivate.h"
#include "notifycalls.h"

QString BVTNotify::stringWithDeviceToken(const QVariant &deviceToken)
{
    return bvt::pushTokenText(deviceToken);
}

void BVTNotify::enableDevice(const QVariant &deviceToken)
{
    enableDevice(deviceToken, nullptr, nullptr);
}

void BVTNotify::enableDevice(const QVariant &deviceToken, const BVTSuccessBlock &success)
{
    enableDevice(deviceToken, success, nullptr);
}

void BVTNotify::enableDevice(const QVariant &deviceToken, const BVTSuccessBlock &success,
                             const BVTFailureBlock &failure)
{
    bvt::ClientPrivate::of().enablePush(deviceToken, bvt::callbacks(success, failure));
}

void BVTNotify::verifyPushEnabled()
{
    verifyPushEnabled(nullptr, nullptr);
}

void BVTNotify::verifyPushEnabled(const BVTSuccessBlock &success)
{
    verifyPushEnabled(success, nullptr);
}

void BVTNotify::verifyPushEnabled(const BVTSuccessBlock &, const BVTFailureBlock &)
{
    // The callbacks are accepted for symmetry with the other families and never called.
    bvt::ClientPrivate::of().verifyPushEnabled();
}

void BVTNotify::requestPushPermissions()
{
    bvt::askForPushPermission();
}
