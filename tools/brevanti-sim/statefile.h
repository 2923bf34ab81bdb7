#pragma once

#include <QJsonObject>
#include <QString>

#include <optional>

namespace bvtsim {

// Why path cannot name a state file, whatever it holds: it names something other than a regular
// file or nothing (a symbolic link is followed). An empty string when it can.
QString stateFileTypeProblem(const QString &path);

// The state saved in path: an empty object when there is none yet (no file, or an empty one).
// Nothing, with the reason in *error, when the file is not one the service wrote or when path
// cannot be written, so that the service never overwrites another program's file.
std::optional<QJsonObject> readStateFile(const QString &path, QString *error);

// Replaces path atomically with state, readable by its owner alone: it holds live bearer tokens.
// When any byte cannot be written (a full disk) the file is left as it was and false returned.
bool writeStateFile(const QString &path, const QJsonObject &state, QString *error);

} // namespace bvtsim
