#include <Brevanti/BVT.h>
#include <Brevanti/BVTNotify.h>

#include "core/deviceguard.h"

#include <stdexcept>

namespace {

void switchPreference(const QString &path, const QString &category, const QString &preference,
                      const BVTSuccessBlock &success, const BVTFailureBlock &failure)
{
    const QString device = BVT::currentDevice();
    if (!bvt::deviceKnown(device))
        return;
    if (category.isNull() || preference.isNull())
        throw std::invalid_argument("a preference switch needs a category and a preference key");
    // A change goes to the user when one is assigned, else to the device; never to both.
    const QString user = BVT::currentUser();
    BVTParameters parameters{{QStringLiteral("category"), category},
                             {QStringLiteral("preference"), preference}};
    if (!user.isNull())
        parameters.insert(QStringLiteral("user"),
                          BVTParameters{{QStringLiteral("identifier"), user}});
    else
        parameters.insert(QStringLiteral("device"),
                          BVTParameters{{QStringLiteral("uuid"), device}});
    BVT::patchUrl(path, parameters, success, failure);
    BVTNotify::verifyPushEnabled();
}

} // namespace

void BVTNotify::getPreferences(const BVTSuccessBlock &success)
{
    getPreferences(success, nullptr);
}

void BVTNotify::getPreferences(const BVTSuccessBlock &success, const BVTFailureBlock &failure)
{
    const QString device = BVT::currentDevice();
    if (!bvt::deviceKnown(device))
        return;
    // The document is always asked for by device, even when a user is assigned.
    BVT::getUrl(QStringLiteral("/preferences"),
                {{QStringLiteral("device"), BVTParameters{{QStringLiteral("uuid"), device}}}},
                success, failure);
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
    switchPreference(QStringLiteral("/preferences/enable"), category, preference, success, failure);
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
    switchPreference(QStringLiteral("/preferences/disable"), category, preference, success,
                     failure);
}
