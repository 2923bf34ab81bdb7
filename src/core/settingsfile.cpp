#include "settingsfile.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLockFile>
#include <QSettings>
#include <QTemporaryFile>

#include <cstdio>

namespace bvt {

namespace {

using Values = QHash<QString, QVariant>;

void apply(QSettings &settings, const SettingsFile::Changes &changes)
{
    for (auto change = changes.cbegin(); change != changes.cend(); ++change) {
        if (change->isValid())
            settings.setValue(change.key(), *change);
        else
            settings.remove(change.key());
    }
}

#if !defined(Q_OS_DARWIN) && !defined(Q_OS_WIN)

const QFile::Permissions ownerOnly = QFile::ReadOwner | QFile::WriteOwner;

// Removes the files it names when it goes, whatever became of them.
struct Leftovers
{
    QStringList names;
    ~Leftovers()
    {
        for (const QString &name : std::as_const(names))
            QFile::remove(name);
    }
};

Values valuesOf(const QSettings &settings)
{
    Values values;
    for (const QString &key : settings.allKeys())
        values.insert(key, settings.value(key));
    return values;
}

// Equal in type, and in value where the type can tell.
bool sameValues(const Values &read, const Values &written)
{
    if (read.size() != written.size())
        return false;
    for (auto it = written.cbegin(); it != written.cend(); ++it) {
        const QVariant value = read.value(it.key());
        if (value.metaType() != it->metaType()
            || (value.metaType().isEqualityComparable() && value != *it))
            return false;
    }
    return true;
}

bool renameOver(const QString &from, const QString &to)
{
    // Unlike QFile::rename, replaces what is there in one step, and a symbolic link itself.
    return std::rename(QFile::encodeName(from).constData(), QFile::encodeName(to).constData()) == 0;
}

#endif

} // namespace

#if defined(Q_OS_DARWIN) || defined(Q_OS_WIN)

// The native store there is not a file of the library's own (user defaults, the registry).
QString SettingsFile::write(const QString &, const Changes &changes)
{
    QSettings settings;
    apply(settings, changes);
    settings.sync();
    return settings.status() == QSettings::NoError ? QString() : QStringLiteral("access error");
}

bool SettingsFile::isUndecodable(const QString &, const QString &, const QVariant &)
{
    return false;
}

#else

QString SettingsFile::write(const QString &fileName, const Changes &changes)
{
    const QString accessError = QStringLiteral("access error");
    const QFileInfo target(fileName);
    QDir().mkpath(target.absolutePath());
    // The lock QSettings takes on the same file, so that another process's write does not go
    // between reading the file and replacing it. A lock that cannot be had, on a full disk say, is
    // no reason not to try the write, as for QSettings.
    QLockFile lock(fileName + QLatin1String(".lock"));
    lock.tryLock(5000);

    // The new file keeps what the current one holds. A file of the library's own that its owner
    // cannot read is made readable again; the file a symbolic link names is never changed.
    QByteArray current;
    if (target.isDir())
        return accessError;
    if (target.exists()) {
        if (!target.isSymLink())
            QFile::setPermissions(fileName, ownerOnly);
        QFile file(fileName);
        if (!file.open(QIODevice::ReadOnly))
            return accessError;
        current = file.readAll();
        if (file.error() != QFileDevice::NoError)
            return accessError;
    }

    // Created with mode 0600, under a name no QSettings has read: QSettings keeps each file it
    // has read by name and would answer the check below from memory.
    Leftovers leftovers;
    QTemporaryFile scratch(target.absolutePath() + QLatin1String("/.") + target.fileName()
                           + QLatin1String(".XXXXXX"));
    scratch.setAutoRemove(false);
    if (!scratch.open())
        return accessError;
    const QString written = scratch.fileName();
    leftovers.names << written;
    const bool copied = scratch.write(current) == current.size() && scratch.flush();
    scratch.close();
    if (!copied || scratch.error() != QFileDevice::NoError)
        return QStringLiteral("short write");

    Values expected;
    {
        QSettings settings(written, QSettings::IniFormat);
        apply(settings, changes);
        settings.sync();
        expected = valuesOf(settings);
    }

    // Read back under a new name, so that what the disk holds is what is compared.
    const QString checked = written + QLatin1String(".checked");
    leftovers.names << checked;
    if (!renameOver(written, checked))
        return accessError;
    {
        const QSettings settings(checked, QSettings::IniFormat);
        if (settings.status() != QSettings::NoError || !sameValues(valuesOf(settings), expected))
            return QStringLiteral("short write");
    }

    // Readers of the settings file reread it only when its size or time differs from what they
    // read last; a change of the same length within the same millisecond must still show.
    const QDateTime replaced = target.exists() ? target.lastModified() : QDateTime();
    if (replaced.isValid() && QFileInfo(checked).lastModified() <= replaced) {
        QFile file(checked);
        if (file.open(QIODevice::ReadWrite))
            file.setFileTime(replaced.addMSecs(1), QFileDevice::FileModificationTime);
    }
    if (!renameOver(checked, fileName))
        return accessError;
    return QString();
}

bool SettingsFile::isUndecodable(const QString &fileName, const QString &key, const QVariant &read)
{
    // QSettings decodes its binary form "@Variant(...)" without telling whether the bytes were
    // whole, and never writes a string in that form.
    if (read.typeId() != QMetaType::QString)
        return false;
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    const QByteArray name = key.toUtf8();
    bool general = true; // keys without a group are in [General], or before any group
    while (!file.atEnd()) {
        const QByteArray line = file.readLine().trimmed();
        if (line.startsWith('[')) {
            general = line == "[General]";
            continue;
        }
        const qsizetype equals = line.indexOf('=');
        if (general && equals > 0 && line.left(equals).trimmed() == name)
            return line.mid(equals + 1).trimmed().startsWith("@Variant(");
    }
    return false;
}

#endif

} // namespace bvt
