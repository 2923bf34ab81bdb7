#pragma once

#include "answer.h"
#include "reply.h"

#include <QJsonObject>
#include <QList>
#include <QPointer>

#include <optional>

class QTcpSocket;

namespace bvtsim {

class ServiceState;
struct RecordedRequest;

// The inspector: a page under /_sim/ (its HTML, script and style are resources; nothing comes from
// elsewhere) that shows what the service holds and the requests as they arrive, and that switches
// preferences and sets faults. It is one of the admin routes, so it answers the machine itself
// alone. Its routes: GET /_sim/inspector (and inspector.js, inspector.css), GET /_sim/state (the
// devices, the tokens and the preference states as JSON), POST /_sim/preferences (switches one
// preference of a device or a user), and GET /_sim/events, an event stream that tells each
// request answered ("request", as GET /_sim/requests shows one) and each change of the state
// ("state").
class Inspector
{
public:
    explicit Inspector(ServiceState &state) : m_state(state) { }
    ~Inspector();

    // A page file, or nothing when path names none.
    static std::optional<Reply> file(const QString &path);
    // Whether path is one of the page's routes: its state, its switches, its event stream.
    static bool covers(const QString &path);
    static bool isEventStream(const RecordedRequest &request);
    // The answer of /_sim/state or /_sim/preferences.
    Answer answer(const RecordedRequest &request);
    // Makes socket an event stream, open until the page goes.
    void stream(QTcpSocket *socket);

    void tellRequest(const QJsonObject &request);
    void tellStateChanged();

private:
    QJsonObject stateJson() const;
    Answer switchPreference(const QByteArray &json);
    void tell(const QByteArray &event, const QByteArray &data);

    ServiceState &m_state;
    QList<QPointer<QTcpSocket>> m_streams;
};

} // namespace bvtsim
