#pragma once

#include <Brevanti/BVTTypes.h>
#include <Brevanti/Client.h>
#include <Brevanti/brevanti_core_export.h>

#include "outcome.h"

#include <memory>

namespace bvt {

class Session;
struct CardRequest;
struct Verb;

// The library's behaviour behind the one client: the session the library was initialised with and
// every call over it. The client's own calls end a bvt::Reply with what they hear; the facade BVT
// and BVTNotify make the same calls and turn what they hear into callbacks, silences and throws.
class ClientPrivate
{
public:
    // The one client's.
    static ClientPrivate &of() { return *Client::instance()->d; }

    // A value as last announced, so that a change is announced once and a write of the same value
    // not at all.
    struct Announced
    {
        QString value;
        bool update(const QString &now);
    };

    // Emits changed when now differs from what announced last told.
    void announce(Announced &announced, const QString &now, void (Client::*changed)());

    Start initialise(const QString &clientId, const QString &clientSecret, const Completion &done);
    Start send(const Verb &verb, const QString &path, const BVTParameters &parameters,
               const Completion &done);
    Start assignDevice(const QString &user, const Completion &done);
    Start unassignDevice(const Completion &done);
    Start enablePush(const QVariant &pushToken, const Completion &done);
    Start fetchPreferences(const Completion &done);
    Start switchPreference(bool enable, const QString &category, const QString &preference,
                           const Completion &done);
    void verifyPushEnabled();
    void setPushToken(const QString &token);
    // Shows the permission card unless a push token is stored; the client hears how it ended.
    void requestCard(const CardRequest &request);

    Client *q = nullptr;
    std::shared_ptr<Session> session; // null until the library is initialised
    Announced deviceId;
    Announced user;
    Announced pushToken;
    bool widgetScreensFollowPalette = false;
};

// Whether the permission card may show. A stored push token is the library's only sign that push
// was accepted already: then it is not shown, which the log says and the client is told
// (CardNotShown). Every card, the widget one and the QML one, asks this first.
BREVANTI_CORE_EXPORT bool permissionCardWanted();

} // namespace bvt
