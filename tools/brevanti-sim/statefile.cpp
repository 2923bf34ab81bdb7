#include "statefile.h"

#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QJsonDocument>
#include <QJsonValue>
#include <QSaveFile>

namespace bvtsim {

namespace {

// The members the service writes, with their types; older files lack the optional ones.
bool isState(const QJsonDocument &document)
{
    static const QHash<QString, QJsonValue::Type> members{{"tokens", QJsonValue::Object},
                                                          {"devices", QJsonValue::Object},
                                                          {"device_order", QJsonValue::Array},
                                                          {"users", QJsonValue::Array},
                                                          {"preferences", QJsonValue::Object}};
    const QJsonObject state = document.object();
    for (auto it = state.begin(); it != state.end(); ++it) {
        if (members.value(it.key(), QJsonValue::Undefined) != it.value().type())
            return false;
    }
    return document.isObject() && state.contains(QLatin1String("tokens"))
            && state.contains(QLatin1String("devices"));
}

} // namespace

QString stateFileTypeProblem(const QString &path)
{
    // Asked before anything opens it: opening a FIFO waits for a writer, and a save would put a
    // regular file in the place of a device node.
    const QFileInfo info(path);
    if (!info.exists() || info.isFile())
        return QString();
    return QStringLiteral("%1 is not a regular file; refusing to use it as the state file")
            .arg(path);
}

std::optional<QJsonObject> readStateFile(const QString &path, QString *error)
{
    const auto fail = [&](const QString &reason) -> std::optional<QJsonObject> {
        if (error)
            *error = reason;
        return std::nullopt;
    };
    if (const QString problem = stateFileTypeProblem(path); !problem.isEmpty())
        return fail(problem);
    QJsonObject state;
    QFile file(path);
    if (file.exists()) {
        if (!file.open(QIODevice::ReadOnly))
            return fail(
                    QStringLiteral("cannot read state file %1: %2").arg(path, file.errorString()));
        const QByteArray bytes = file.readAll();
        QJsonParseError parseError;
        const QJsonDocument document = QJsonDocument::fromJson(bytes, &parseError);
        if (!bytes.trimmed().isEmpty() && !isState(document))
            return fail(QStringLiteral("%1 is not a brevanti-sim state file (%2); refusing to "
                                       "overwrite it")
                                .arg(path,
                                     parseError.error == QJsonParseError::NoError
                                             ? QStringLiteral("that is a JSON object with "
                                                              "\"tokens\" and \"devices\"")
                                             : QStringLiteral("not JSON: ")
                                                     + parseError.errorString()));
        state = document.object();
    }
    // Every save writes a temporary file beside path and renames it, so that is what to try.
    QSaveFile probe(path);
    if (!probe.open(QIODevice::WriteOnly))
        return fail(
                QStringLiteral("cannot write state file %1: %2").arg(path, probe.errorString()));
    probe.cancelWriting();
    return state;
}

bool writeStateFile(const QString &path, const QJsonObject &state, QString *error)
{
    const QByteArray bytes = QJsonDocument(state).toJson();
    QSaveFile file(path);
    const auto fail = [&](const QString &reason) {
        if (error)
            *error = reason;
        file.cancelWriting();
        return false;
    };
    // Before the first byte: a save file otherwise takes the mode of the file it replaces.
    if (!file.open(QIODevice::WriteOnly)
        || !file.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner))
        return fail(file.errorString());
    // A full disk takes part of the bytes without an error: write() answers fewer, or flush()
    // fails on what it buffered, which commit() would not tell, renaming the cut file into place.
    if (file.write(bytes) != bytes.size() || !file.flush())
        return fail(QStringLiteral("not all of its %1 bytes could be written (%2)")
                            .arg(bytes.size())
                            .arg(file.errorString()));
    return file.commit() || fail(file.errorString());
}

} // namespace bvtsim
