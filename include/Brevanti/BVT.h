#pragma once

/// \file
/// The facade BVT over the library's one manager, and the version symbols. It includes the
/// library-wide settings, <Brevanti/Network.h> and <Brevanti/Logging.h>.

#include <Brevanti/brevanti_core_export.h>

#include <Brevanti/BVTManager.h>
#include <Brevanti/BVTTypes.h>
#include <Brevanti/Logging.h>
#include <Brevanti/Network.h>

#include <QString>
#include <QVariantMap>

/// The host application's way into the library. Initialise it once at launch; every other call
/// goes to the one shared manager. Before the first initialisation every call is dropped (its
/// callbacks are never called) and every query answers a null QString.
class BREVANTI_CORE_EXPORT BVT
{
public:
    BVT() = delete;

    /// Makes a new shared manager, replacing the one before (whose requests under way still
    /// finish), and starts the device's registration.
    static void initWithLaunchOptions(const QVariantMap &launchOptions, const QString &clientId,
                                      const QString &clientSecret);

    /// An authenticated GET, POST or PATCH of a path of the service, through the shared manager
    /// (see BVTManager::getUrl).
    ///@{
    static void getUrl(const QString &path, const BVTParameters &parameters,
                       const BVTSuccessBlock &success, const BVTFailureBlock &failure);
    static void postUrl(const QString &path, const BVTParameters &parameters,
                        const BVTSuccessBlock &success, const BVTFailureBlock &failure);
    static void patchUrl(const QString &path, const BVTParameters &parameters,
                         const BVTSuccessBlock &success, const BVTFailureBlock &failure);
    ///@}

    /// Releases the device from the application's user; on success the stored user identifier is
    /// removed.
    ///@{
    static void unassignDevice();
    static void unassignDevice(const BVTSuccessBlock &success);
    static void unassignDevice(const BVTSuccessBlock &success, const BVTFailureBlock &failure);
    ///@}

    /// Ties the device to the application's user (once currentDevice() is set); on success the
    /// identifier given is stored. A null identifier throws std::invalid_argument before anything
    /// is sent.
    ///@{
    static void assignDeviceToUser(const QString &userIdentifier);
    static void assignDeviceToUser(const QString &userIdentifier, const BVTSuccessBlock &success);
    static void assignDeviceToUser(const QString &userIdentifier, const BVTSuccessBlock &success,
                                   const BVTFailureBlock &failure);
    ///@}

    /// The device identifier the service issued at registration; null until then.
    static QString currentDevice();
    /// The identifier of the user the device is assigned to; null while it is assigned to none.
    static QString currentUser();
    /// The push token the service accepted (BVTNotify::enableDevice); null while there is none.
    static QString currentDeviceToken();
    /// Stores the push token as if the service had accepted it.
    static void setCurrentDeviceToken(const QString &token);
};

// C linkage keeps these symbols unadorned; deviceName returns a QString all the same, which clang
// would warn about.
#if defined(__clang__)
#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Wreturn-type-c-linkage"
#endif
extern "C" {
/// The machine field of the kernel's system identification (uname), decoded as UTF-8; a null
/// QString when it is not valid UTF-8.
BREVANTI_CORE_EXPORT QString deviceName();

/// The library's version as a number (1.0), read at run time; the version of the headers a host
/// was built with is BREVANTI_VERSION.
BREVANTI_CORE_EXPORT extern const double BrevantiVersionNumber;
/// The identification line that what(1) finds in the binary, ended by a line break:
/// `@(#)PROGRAM:Brevanti  PROJECT:Brevanti-1`.
BREVANTI_CORE_EXPORT extern const unsigned char BrevantiVersionString[];
}
#if defined(__clang__)
#pragma clang diagnostic pop
#endif
