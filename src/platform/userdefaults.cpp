#include "userdefaults.h"

#include "client/log.h"

#include <QSettings>

namespace bvt {

namespace {

QSettings &settings()
{
    // One instance for the process, so that a change whose write failed is still held.
    static QSettings instance;
    return instance;
}

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

} // namespace

UserDefaults &UserDefaults::standardUserDefaults()
{
    static UserDefaults defaults;
    return defaults;
}

QString UserDefaults::stringForKey(const QString &key) const
{
    const QVariant value = settings().value(key);
    if (value.typeId() == QMetaType::QString)
        return value.toString();
    if (isNumber(value))
        return describe(value);
    return QString();
}

void UserDefaults::setObject(const QVariant &value, const QString &key)
{
    if (!value.isValid() || value.isNull())
        settings().remove(key);
    else
        settings().setValue(key, value);
}

void UserDefaults::removeObjectForKey(const QString &key)
{
    settings().remove(key);
}

bool UserDefaults::synchronize()
{
    QSettings &store = settings();
    store.sync();
    if (store.status() == QSettings::NoError)
        return true;
    log("Failed to save settings to %@: %@", store.fileName(),
        store.status() == QSettings::AccessError ? "access error" : "format error");
    return false;
}

} // namespace bvt
