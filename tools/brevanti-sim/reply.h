#pragma once

#include "answer.h"
#include "pace.h"

#include <QByteArray>
#include <QList>
#include <QPair>

class QTcpSocket;

namespace bvtsim {

// Everything the service sends back for one request.
struct Reply
{
    int status = 200;
    QByteArray contentType = "application/json";
    QList<QPair<QByteArray, QByteArray>> headers;
    QByteArray body;
    bool dropConnection = false;
    bool truncateBody = false;
    bool stallAfterHalf = false; // a truncated body leaves the connection open, silent
    bool close = false;          // the connection ends after this answer
    int delayMs = 0;             // sent this much later
    Pace pace = Pace::Whole;
    bool eventStream = false; // the connection becomes the inspector's event stream
};

Reply replyOf(const Answer &answer);

// Writes reply on the socket as the answer to a request with method: "HEAD" gets no body.
void respond(QTcpSocket *socket, const QByteArray &method, const Reply &reply);

} // namespace bvtsim
