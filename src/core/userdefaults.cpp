#include "userdefaults.h"

#include "log.h"

#include <QDataStream>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSettings>

namespace bvt {

// A string that UTF-8 cannot carry, as it holds an unpaired surrogate. The settings file keeps
// strings as UTF-8, so such a string is stored as this type, whose UTF-16 code units the file
// keeps in binary form. The file names the type: keep its name.
struct Utf16Text
{
    QString text;
};

QDataStream &operator<<(QDataStream &stream, const Utf16Text &value)
{
    return stream << value.text;
}

QDataStream &operator>>(QDataStream &stream, Utf16Text &value)
{
    return stream >> value.text;
}

namespace {

// Registered as the library loads, before anything in the process can parse the settings file.
void registerUtf16Text()
{
    qRegisterMetaType<Utf16Text>();
}
Q_CONSTRUCTOR_FUNCTION(registerUtf16Text)

bool isNumber(const QVariant &value)
{
    switch (value.typeId()) {
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Double:
    case QMetaType::Float:
    case QMetaType::Bool:
        return true;
    default:
        return false;
    }
}

// What is stored for a value (an invalid QVariant: nothing). The settings file keeps strings and
// numbers as bare text, without their type, so each value is stored in the form that reads back
// the same in this process and the next: a number as its decimal text, a string that UTF-8 cannot
// carry as Utf16Text, and anything else inside a one-item list, which the file keeps in binary
// form and which therefore never reads back as text.
QVariant storedForm(const QVariant &value)
{
    if (!value.isValid() || value.isNull())
        return QVariant();
    if (isNumber(value))
        return describe(value);
    if (value.typeId() != QMetaType::QString)
        return QVariantList{value};
    const QString text = value.toString();
    if (text.isNull())
        return QVariant();
    if (!text.isValidUtf16())
        return QVariant::fromValue(Utf16Text{text});
    return text;
}

QString textOf(const QVariant &stored)
{
    if (stored.typeId() == QMetaType::QString)
        return stored.toString();
    if (stored.metaType() == QMetaType::fromType<Utf16Text>())
        return stored.value<Utf16Text>().text;
    return QString();
}

// The settings hold identifiers of the device and its user: only the owner may read the file.
// A missing file is created with those permissions before anything is written into it, and each
// write keeps the permissions of the file that it replaces.
void keepToOwner(const QString &fileName)
{
    const QFile::Permissions ownerOnly = QFile::ReadOwner | QFile::WriteOwner;
    const QFileInfo info(fileName);
    if (info.isFile()) {
        QFile::setPermissions(fileName, ownerOnly);
    } else if (!info.exists()) {
        QDir().mkpath(info.absolutePath());
        QFile(fileName).open(QIODevice::WriteOnly | QIODevice::NewOnly, ownerOnly);
    }
}

QByteArray contentsOf(const QString &fileName)
{
    QFile file(fileName);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// Writes the changes and tells whether they reached the file. An instance keeps reporting the
// first error it met, so once it has read a file with a format problem its status cannot tell how
// the write went; the file can, since a write replaces it with one that has no such problem.
bool syncAndCheck(QSettings &settings)
{
    const QByteArray before = contentsOf(settings.fileName());
    settings.sync();
    switch (settings.status()) {
    case QSettings::NoError:
        return true;
    case QSettings::FormatError:
        return contentsOf(settings.fileName()) != before;
    case QSettings::AccessError:
        break;
    }
    return false;
}

} // namespace

UserDefaults &UserDefaults::standardUserDefaults()
{
    static UserDefaults defaults;
    return defaults;
}

QString UserDefaults::stringForKey(const QString &key) const
{
    const auto pending = m_pending.constFind(key);
    return textOf(pending != m_pending.cend() ? *pending : QSettings().value(key));
}

void UserDefaults::setObject(const QVariant &value, const QString &key)
{
    m_pending.insert(key, storedForm(value));
}

void UserDefaults::removeObjectForKey(const QString &key)
{
    m_pending.insert(key, QVariant());
}

bool UserDefaults::synchronize()
{
    // A new instance each time, as one that met an error keeps reporting it.
    QSettings settings;
    keepToOwner(settings.fileName());
    for (auto change = m_pending.cbegin(); change != m_pending.cend(); ++change) {
        if (change->isValid())
            settings.setValue(change.key(), *change);
        else
            settings.remove(change.key());
    }
    if (!syncAndCheck(settings)) {
        log("Failed to save settings to %@: %@", settings.fileName(),
            settings.status() == QSettings::AccessError ? "access error" : "format error");
        return false;
    }
    m_pending.clear();
    return true;
}

} // namespace bvt
