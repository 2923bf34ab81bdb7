#pragma once

#include <QByteArray>
#include <QList>
#include <QPair>
#include <QString>

namespace bvtsim {

using Headers = QList<QPair<QByteArray, QByteArray>>;

// Value of the first header called name, compared case-insensitively; a null QByteArray when
// there is none.
QByteArray headerValue(const Headers &headers, const QByteArray &name);

// Why a request with these headers has no single length to trust, or an empty string when it
// has one. The HTTP layer underneath has already picked some length by then, so the bytes after
// such a request cannot be told apart: the service answers 400 and closes the connection.
QString framingProblem(const Headers &headers);

// Whether the client asks for the connection to be closed after this answer.
bool wantsClose(const Headers &headers);

} // namespace bvtsim
