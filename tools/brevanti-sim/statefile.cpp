#include "statefile.h"

#include <QFile>
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

std::optional<QJsonObject> readStateFile(const QString &path, QString *error)
{
    const auto fail = [&](const QString &reason) -> std::optional<QJsonObject> {
        if (error)
            *error = reason;
        return std::nullopt;
    };
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
    QSaveFile file(path);
    // Before the first byte: a save file otherwise takes the mode of the file it replaces.
    const bool written = file.open(QIODevice::WriteOnly)
            && file.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner)
            && file.write(QJsonDocument(state).toJson()) >= 0 && file.commit();
    if (!written && error)
        *error = file.errorString();
    return written;
}

} // namespace bvtsim
