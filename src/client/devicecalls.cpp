#include "devicecalls.h"

#include "core/log.h"
#include "devicedescription.h"
#include "identifiers.h"
#include "session.h"
#include "verb.h"

namespace bvt {

QString registeredDevice(const std::shared_ptr<Session> &session)
{
    // Every device-bound call starts here: while no identifier is known (not initialised, or the
    // first registration has not completed) it only writes this line to the log.
    const QString device = session ? identifiers::deviceId() : QString();
    if (device.isNull())
        log("You have not fired initWithLaunchOptions yet!");
    return device;
}

Start registerDevice(const std::shared_ptr<Session> &session, const Completion &done)
{
    const QString stored = identifiers::deviceId();
    if (!stored.isNull()) {
        log("Initializing device: %@", stored);
        return {Start::AlreadyDone};
    }
    session->send(Verb::post, QStringLiteral("/devices"), deviceDescription(),
                  [done](const Outcome &outcome) {
                      if (outcome.response.accepted) {
                          const QVariant device =
                                  outcome.response.object.toMap().value(QStringLiteral("device"));
                          identifiers::setDeviceId(device.toMap().value(QStringLiteral("uuid")));
                      }
                      done(outcome);
                  });
    return {Start::Sent};
}

Start assignDevice(const std::shared_ptr<Session> &session, const QString &user,
                   const Completion &done)
{
    const QString device = registeredDevice(session);
    if (device.isNull())
        return {Start::NotRegistered};
    if (user.isNull())
        return {Start::Refused, "assignDeviceToUser: the user identifier is nil"};
    const BVTParameters parameters{
            {QStringLiteral("device"), BVTParameters{{QStringLiteral("uuid"), device}}},
            {QStringLiteral("user"), BVTParameters{{QStringLiteral("identifier"), user}}}};
    session->send(Verb::patch, QStringLiteral("/devices/assign"), parameters,
                  [user, done](const Outcome &outcome) {
                      if (outcome.response.accepted)
                          identifiers::setUserId(user);
                      done(outcome);
                  });
    return {Start::Sent};
}

Start unassignDevice(const std::shared_ptr<Session> &session, const Completion &done)
{
    const QString device = registeredDevice(session);
    if (device.isNull())
        return {Start::NotRegistered};
    const BVTParameters parameters{
            {QStringLiteral("device"), BVTParameters{{QStringLiteral("uuid"), device}}}};
    session->send(Verb::patch, QStringLiteral("/devices/unassign"), parameters,
                  [done](const Outcome &outcome) {
                      if (outcome.response.accepted)
                          identifiers::clearUserId();
                      done(outcome);
                  });
    return {Start::Sent};
}

} // namespace bvt
