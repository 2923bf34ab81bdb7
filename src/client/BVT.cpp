#include <Brevanti/BVT.h>

#include "core/identifierevents.h"
#include "facade.h"

namespace {
std::shared_ptr<BVTManager> currentBVTManager;
}

bool bvt::facadeInitialised()
{
    return currentBVTManager != nullptr;
}

extern "C" {
const double BrevantiVersionNumber = 1.0;
const unsigned char BrevantiVersionString[] = "@(#)PROGRAM:Brevanti  PROJECT:Brevanti-1\n";
}

void BVT::initWithLaunchOptions(const QVariantMap &launchOptions, const QString &clientId,
                                const QString &clientSecret)
{
    currentBVTManager = BVTManager::initWithLaunchOptions(launchOptions, clientId, clientSecret);
    // Until the first manager the facade reads no identifier; from now on it reads the stored ones.
    bvt::IdentifierEvents &events = bvt::IdentifierEvents::instance();
    Q_EMIT events.deviceIdChanged();
    Q_EMIT events.userIdChanged();
    Q_EMIT events.deviceTokenChanged();
}

void BVT::getUrl(const QString &path, const BVTParameters &parameters,
                 const BVTSuccessBlock &success, const BVTFailureBlock &failure)
{
    if (currentBVTManager)
        currentBVTManager->getUrl(path, parameters, success, failure);
}

void BVT::postUrl(const QString &path, const BVTParameters &parameters,
                  const BVTSuccessBlock &success, const BVTFailureBlock &failure)
{
    if (currentBVTManager)
        currentBVTManager->postUrl(path, parameters, success, failure);
}

void BVT::patchUrl(const QString &path, const BVTParameters &parameters,
                   const BVTSuccessBlock &success, const BVTFailureBlock &failure)
{
    if (currentBVTManager)
        currentBVTManager->patchUrl(path, parameters, success, failure);
}

void BVT::unassignDevice()
{
    if (currentBVTManager)
        currentBVTManager->unassignDevice();
}

void BVT::unassignDevice(const BVTSuccessBlock &success)
{
    if (currentBVTManager)
        currentBVTManager->unassignDevice(success);
}

void BVT::unassignDevice(const BVTSuccessBlock &success, const BVTFailureBlock &failure)
{
    if (currentBVTManager)
        currentBVTManager->unassignDevice(success, failure);
}

void BVT::assignDeviceToUser(const QString &userIdentifier)
{
    if (currentBVTManager)
        currentBVTManager->assignDeviceToUser(userIdentifier);
}

void BVT::assignDeviceToUser(const QString &userIdentifier, const BVTSuccessBlock &success)
{
    if (currentBVTManager)
        currentBVTManager->assignDeviceToUser(userIdentifier, success);
}

void BVT::assignDeviceToUser(const QString &userIdentifier, const BVTSuccessBlock &success,
                             const BVTFailureBlock &failure)
{
    if (currentBVTManager)
        currentBVTManager->assignDeviceToUser(userIdentifier, success, failure);
}

QString BVT::currentDevice()
{
    return currentBVTManager ? currentBVTManager->currentDevice() : QString();
}

QString BVT::currentUser()
{
    return currentBVTManager ? currentBVTManager->currentUser() : QString();
}

QString BVT::currentDeviceToken()
{
    return currentBVTManager ? currentBVTManager->currentDeviceToken() : QString();
}

void BVT::setCurrentDeviceToken(const QString &token)
{
    if (currentBVTManager)
        currentBVTManager->setCurrentDeviceToken(token);
}
