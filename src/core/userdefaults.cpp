#include "userdefaults.h"

#include "log.h"
#include "settingsfile.h"

#include <QDataStream>
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
    // Bytes cut short leave nothing that was stored: read as absent, not as an empty string.
    stream >> value.text;
    if (stream.status() != QDataStream::Ok)
        value.text = QString();
    return stream;
}

// Lets the settings file compare what it wrote with what it reads back.
bool operator==(const Utf16Text &a, const Utf16Text &b)
{
    return a.text == b.text;
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

} // namespace

UserDefaults &UserDefaults::standardUserDefaults()
{
    static UserDefaults defaults;
    return defaults;
}

QString UserDefaults::stringForKey(const QString &key) const
{
    const auto pending = m_pending.constFind(key);
    if (pending != m_pending.cend())
        return textOf(*pending);
    const QSettings settings;
    // Said once, not on every read; said again if the file becomes unreadable once more.
    const bool unreadable = settings.status() == QSettings::AccessError;
    if (unreadable && !m_unreadableLogged)
        log("Failed to read settings from %@: access error", settings.fileName());
    m_unreadableLogged = unreadable;
    const QVariant stored = settings.value(key);
    return SettingsFile::isUndecodable(settings.fileName(), key, stored) ? QString()
                                                                         : textOf(stored);
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
    const QString fileName = QSettings().fileName();
    const QString problem = SettingsFile::write(fileName, m_pending);
    if (!problem.isEmpty()) {
        log("Failed to save settings to %@: %@", fileName, problem);
        return false;
    }
    m_pending.clear();
    return true;
}

} // namespace bvt
