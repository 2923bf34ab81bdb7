#pragma once

#include <QString>

class QHostAddress;

namespace bvtsim {

struct RecordedRequest;

// Why the admin routes refuse request, or an empty string when they answer it. They answer the
// machine itself alone: a loopback peer that names the service by a loopback name in Host (so that
// no name an attacker rebinds to 127.0.0.1 reaches them), from no web page of another origin (whose
// browser sends Origin, even on a cross-site form post). port is the service's.
QString adminRefusal(const RecordedRequest &request, const QHostAddress &peer, quint16 port);

} // namespace bvtsim
