#include <Brevanti/BVT.h>

#include "callbacks.h"
#include "clientprivate.h"
#include "verb.h"

extern "C" {
const double BrevantiVersionNumber = 1.0;
const unsigned char BrevantiVersionString[] = "@(#)PROGRAM:Brevanti  PROJECT:Brevanti-1\n";
}

namespace {

bvt::ClientPrivate &client()
{
    return bvt::ClientPrivate::of();
}

} // namespace

void BVT::initWithLaunchOptions(const QVariantMap &launchOptions, const QString &clientId,
                                const QString &clientSecret)
{
    Q_UNUSED(launchOptions); // accepted for the host's convenience; nothing in them is used
    client().initialise(clientId, clientSecret, [](const bvt::Outcome &) {});
}

void BVT::getUrl(const QString &path, const BVTParameters &parameters,
                 const BVTSuccessBlock &success, const BVTFailureBlock &failure)
{
    client().send(bvt::Verb::get, path, parameters, bvt::callbacks(success, failure));
}

void BVT::postUrl(const QString &path, const BVTParameters &parameters,
                  const BVTSuccessBlock &success, const BVTFailureBlock &failure)
{
    client().send(bvt::Verb::post, path, parameters, bvt::callbacks(success, failure));
}

void BVT::patchUrl(const QString &path, const BVTParameters &parameters,
                   const BVTSuccessBlock &success, const BVTFailureBlock &failure)
{
    client().send(bvt::Verb::patch, path, parameters, bvt::callbacks(success, failure));
}

void BVT::unassignDevice()
{
    unassignDevice(nullptr, nullptr);
}

void BVT::unassignDevice(const BVTSuccessBlock &success)
{
    unassignDevice(success, nullptr);
}

void BVT::unassignDevice(const BVTSuccessBlock &success, const BVTFailureBlock &failure)
{
    client().unassignDevice(bvt::callbacks(success, failure));
}

void BVT::assignDeviceToUser(const QString &userIdentifier)
{
    assignDeviceToUser(userIdentifier, nullptr, nullptr);
}

void BVT::assignDeviceToUser(const QString &userIdentifier, const BVTSuccessBlock &success)
{
    assignDeviceToUser(userIdentifier, success, nullptr);
}

void BVT::assignDeviceToUser(const QString &userIdentifier, const BVTSuccessBlock &success,
                             const BVTFailureBlock &failure)
{
    bvt::throwIfRefused(client().assignDevice(userIdentifier, bvt::callbacks(success, failure)));
}

QString BVT::currentDevice()
{
    return bvt::Client::instance()->deviceId();
}

QString BVT::currentUser()
{
    return bvt::Client::instance()->user();
}

QString BVT::currentDeviceToken()
{
    return bvt::Client::instance()->pushToken();
}

void BVT::setCurrentDeviceToken(const QString &token)
{
    client().setPushToken(token);
}
