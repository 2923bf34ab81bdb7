#include <Brevanti/BVTNotify.h>

#include "client/callbacks.h"
#include "client/clientprivate.h"

void BVTNotify::getPreferences(const BVTSuccessBlock &success)
{
    getPreferences(success, nullptr);
}

void BVTNotify::getPreferences(const BVTSuccessBlock &success, const BVTFailureBlock &failure)
{
    bvt::ClientPrivate::of().fetchPreferences(bvt::callbacks(success, failure));
}

void BVTNotify::enablePreferenceWithCategory(const QString &category, const QString &preference)
{
    enablePreferenceWithCategory(category, preference, nullptr, nullptr);
}

void BVTNotify::enablePreferenceWithCategory(const QString &category, const QString &preference,
                                             const BVTSuccessBlock &success)
{
    enablePreferenceWithCategory(category, preference, success, nullptr);
}

void BVTNotify::enablePreferenceWithCategory(const QString &category, const QString &preference,
                                             const BVTSuccessBlock &success,
                                             const BVTFailureBlock &failure)
{
    bvt::throwIfRefused(bvt::ClientPrivate::of().switchPreference(
            true, category, preference, bvt::callbacks(success, failure)));
}

void BVTNotify::disablePreferenceWithCategory(const QString &category, const QString &preference)
{
    disablePreferenceWithCategory(category, preference, nullptr, nullptr);
}

void BVTNotify::disablePreferenceWithCategory(const QString &category, const QString &preference,
                                              const BVTSuccessBlock &success)
{
    disablePreferenceWithCategory(category, preference, success, nullptr);
}

void BVTNotify::disablePreferenceWithCategory(const QString &category, const QString &preference,
                                              const BVTSuccessBlock &success,
                                              const BVTFailureBlock &failure)
{
    bvt::throwIfRefused(bvt::ClientPrivate::of().switchPreference(
            false, category, preference, bvt::callbacks(success, failure)));
}
