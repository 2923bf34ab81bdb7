#pragma once

#include "outcome.h"

#include <QString>

#include <memory>

namespace bvt {

class Session;

// The device's calls of the service, over a session. Each tells its completion once the service
// has answered (after storing what the answer makes true), or returns at once with what kept it
// from being sent.

// Registers the device unless an identifier is stored; stores the one the service issues.
Start registerDevice(const std::shared_ptr<Session> &session, const Completion &done);
// Ties the device to the host's user; stores the user once the service accepted.
Start assignDevice(const std::shared_ptr<Session> &session, const QString &user,
                   const Completion &done);
// Releases the device from its user; removes the stored user once the service accepted.
Start unassignDevice(const std::shared_ptr<Session> &session, const Completion &done);

// The stored device identifier as the calls over this session see it: none without a session, and
// a log line when there is none.
QString registeredDevice(const std::shared_ptr<Session> &session);

} // namespace bvt
