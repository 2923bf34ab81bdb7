#include <Brevanti/BVTManager.h>

#include "client/origin.h"
#include "core/deviceguard.h"
#include "core/log.h"

#include <stdexcept>

std::shared_ptr<BVTManager> BVTManager::initWithLaunchOptions(const QVariantMap &launchOptions,
                                                              const QString &clientId,
                                                              const QString &clientSecret)
{
    Q_UNUSED(launchOptions); // accepted for the host's convenience; nothing in them is used
    std::shared_ptr<BVTManager> manager(new BVTManager);
    manager->setClientId(clientId);
    manager->setClientSecret(clientSecret);
    manager->setOrigin(bvt::serviceOrigin());
    manager->setCurrent_user(QString());
    manager->initDevice();
    return manager;
}

void BVTManager::initDevice()
{
    initDevice(nullptr, nullptr);
}

void BVTManager::initDevice(const BVTSuccessBlock &success)
{
    initDevice(success, nullptr);
}

void BVTManager::initDevice(const BVTSuccessBlock &success, const BVTFailureBlock &failure)
{
    if (!getBVTDeviceId().isNull()) {
        // Registered already: callers must not wait for a callback here.
        bvt::log("Initializing device: %@", getBVTDeviceId());
        return;
    }
    postUrl(
            QStringLiteral("/devices"), deviceParams(),
            [self = shared_from_this(), success](const QVariant &response) {
                const QVariant device = response.toMap().value(QStringLiteral("device"));
                self->setBVTDeviceId(device.toMap().value(QStringLiteral("uuid")));
                if (success)
                    success(response);
            },
            failure);
}

void BVTManager::unassignDevice()
{
    unassignDevice(nullptr, nullptr);
}

void BVTManager::unassignDevice(const BVTSuccessBlock &success)
{
    unassignDevice(success, nullptr);
}

void BVTManager::unassignDevice(const BVTSuccessBlock &success, const BVTFailureBlock &failure)
{
    if (!bvt::deviceKnown(currentDevice()))
        return;
    const BVTParameters parameters{
            {QStringLiteral("device"), BVTParameters{{QStringLiteral("uuid"), getBVTDeviceId()}}}};
    patchUrl(
            QStringLiteral("/devices/unassign"), parameters,
            [self = shared_from_this(), success](const QVariant &response) {
                self->clearBVTUserId();
                if (success)
                    success(response);
            },
            failure);
}

void BVTManager::assignDeviceToUser(const QString &userIdentifier)
{
    assignDeviceToUser(userIdentifier, nullptr, nullptr);
}

void BVTManager::assignDeviceToUser(const QString &userIdentifier, const BVTSuccessBlock &success)
{
    assignDeviceToUser(userIdentifier, success, nullptr);
}

void BVTManager::assignDeviceToUser(const QString &userIdentifier, const BVTSuccessBlock &success,
                                    const BVTFailureBlock &failure)
{
    if (!bvt::deviceKnown(currentDevice()))
        return;
    if (userIdentifier.isNull())
        throw std::invalid_argument("assignDeviceToUser: the user identifier is nil");
    const BVTParameters parameters{
            {QStringLiteral("device"), BVTParameters{{QStringLiteral("uuid"), getBVTDeviceId()}}},
            {QStringLiteral("user"),
             BVTParameters{{QStringLiteral("identifier"), userIdentifier}}}};
    patchUrl(
            QStringLiteral("/devices/assign"), parameters,
            [self = shared_from_this(), userIdentifier, success](const QVariant &response) {
                self->setBVTUserId(userIdentifier);
                if (success)
                    success(response);
            },
            failure);
}
