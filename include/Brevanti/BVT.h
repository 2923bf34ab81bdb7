#pragma once

#include <Brevanti/brevanti_core_export.h>

#include <Brevanti/BVTManager.h>
#include <Brevanti/BVTTypes.h>

#include <QString>
#include <QVariantMap>

class QNetworkAccessManager;

// The host application's way into the library. Initialise it once at launch; every other call
// goes to the one shared manager. Before the first initialisation every call is dropped (its
// callbacks are never called) and every query answers a null QString.
class BREVANTI_CORE_EXPORT BVT
{
public:
    BVT() = delete;

    // Makes a new shared manager, replacing the one before (whose requests under way still
    // finish), and starts the device's registration.
    static void initWithLaunchOptions(const QVariantMap &launchOptions, const QString &clientId,
                                      const QString &clientSecret);

    static void getUrl(const QString &path, const BVTParameters &parameters,
                       const BVTSuccessBlock &success, const BVTFailureBlock &failure);
    static void postUrl(const QString &path, const BVTParameters &parameters,
                        const BVTSuccessBlock &success, const BVTFailureBlock &failure);
    static void patchUrl(const QString &path, const BVTParameters &parameters,
                         const BVTSuccessBlock &success, const BVTFailureBlock &failure);

    static void unassignDevice();
    static void unassignDevice(const BVTSuccessBlock &success);
    static void unassignDevice(const BVTSuccessBlock &success, const BVTFailureBlock &failure);
    static void assignDeviceToUser(const QString &userIdentifier);
    static void assignDeviceToUser(const QString &userIdentifier, const BVTSuccessBlock &success);
    static void assignDeviceToUser(const QString &userIdentifier, const BVTSuccessBlock &success,
                                   const BVTFailureBlock &failure);

    static QString currentDevice();
    static QString currentUser();
    static QString currentDeviceToken();
    static void setCurrentDeviceToken(const QString &token);
};

namespace bvt {

// Hands the library a network access manager of the host's own (a proxy, TLS settings, or the
// service's origin routed elsewhere). The library does not take ownership; nullptr goes back to
// the library's built-in manager. Call it on the main thread.
BREVANTI_CORE_EXPORT void setNetworkAccessManager(QNetworkAccessManager *manager);

// Where the library's log lines go. By default each line is written with qInfo() in Qt's default
// category, exactly as it stands. A handler receives each line instead: route it elsewhere, or
// drop it to silence the library without silencing the host's own qInfo() lines. An empty
// function goes back to the default. Call it on the main thread.
using LogHandler = std::function<void(const QString &line)>;
BREVANTI_CORE_EXPORT void setLogHandler(LogHandler handler);

} // namespace bvt

// C linkage keeps these symbols unadorned; deviceName returns a QString all the same, which clang
// would warn about.
#if defined(__clang__)
#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Wreturn-type-c-linkage"
#endif
extern "C" {
// The machine field of the kernel's system identification (uname), decoded as UTF-8; a null
// QString when it is not valid UTF-8.
BREVANTI_CORE_EXPORT QString deviceName();

BREVANTI_CORE_EXPORT extern const double BrevantiVersionNumber;
BREVANTI_CORE_EXPORT extern const unsigned char BrevantiVersionString[];
}
#if defined(__clang__)
#pragma clang diagnostic pop
#endif
