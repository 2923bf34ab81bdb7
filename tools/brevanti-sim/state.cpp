#include "state.h"

#include <QFile>
#include <QJsonDocument>
#include <QRandomGenerator>
#include <QSet>
#include <QUuid>

namespace bvtsim {

namespace {

// The members of a saved device record that are the service's own, not the library's.
const char *const OwnMembers[] = {"uuid", "user", "push_token", "registered_at"};

QJsonValue orNull(const std::optional<QString> &value)
{
    return value ? QJsonValue(*value) : QJsonValue(QJsonValue::Null);
}

std::optional<QString> stringOrNone(const QJsonValue &value)
{
    return value.isString() ? std::optional<QString>(value.toString()) : std::nullopt;
}

// The member of objects whose "key" is key; an empty object when none is.
QJsonObject withKey(const QJsonArray &objects, const QString &key)
{
    for (const QJsonValue &value : objects) {
        if (value.toObject().value(QLatin1String("key")) == key)
            return value.toObject();
    }
    return QJsonObject();
}

// Categories and preferences are addressed by key, so each must have one of its own.
bool uniqueKeys(const QJsonArray &objects)
{
    QSet<QString> keys;
    for (const QJsonValue &value : objects) {
        const QString key = value.toObject().value(QLatin1String("key")).toString();
        if (key.isEmpty() || keys.contains(key))
            return false;
        keys.insert(key);
    }
    return true;
}

// Keys of the saved preference states: a device and a user may share an identifier.
QString addressee(Holder holder, const QString &id)
{
    return QLatin1String(holder == Holder::Device ? "device:" : "user:") + id;
}

QJsonObject record(const Device &device)
{
    QJsonObject record = device.description;
    record.insert(QLatin1String("uuid"), device.uuid);
    record.insert(QLatin1String("user"), orNull(device.user));
    record.insert(QLatin1String("push_token"), orNull(device.pushToken));
    return record;
}

Device deviceOf(const QString &uuid, QJsonObject saved)
{
    Device device;
    device.uuid = uuid;
    device.user = stringOrNone(saved.value(QLatin1String("user")));
    device.pushToken = stringOrNone(saved.value(QLatin1String("push_token")));
    device.registered = QDateTime::fromString(
            saved.value(QLatin1String("registered_at")).toString(), Qt::ISODateWithMs);
    for (const char *member : OwnMembers)
        saved.remove(QLatin1String(member));
    device.description = saved;
    return device;
}

} // namespace

ServiceState::ServiceState()
{
    QFile defaults(QStringLiteral(":/brevanti-sim/catalogue.json"));
    if (defaults.open(QIODevice::ReadOnly))
        m_catalogue = QJsonDocument::fromJson(defaults.readAll()).array();
}

QString ServiceState::registerDevice(const QJsonObject &description, const QDateTime &when)
{
    const QString uuid = QUuid::createUuid().toString(QUuid::WithoutBraces);
    m_devices.insert(uuid, {uuid, description, std::nullopt, std::nullopt, when});
    m_deviceOrder.append(uuid);
    ++m_revision;
    return uuid;
}

bool ServiceState::hasDevice(const QString &uuid) const
{
    return m_devices.contains(uuid);
}

QJsonObject ServiceState::device(const QString &uuid) const
{
    const auto it = m_devices.constFind(uuid);
    return it == m_devices.cend() ? QJsonObject() : record(*it);
}

QStringList ServiceState::deviceIds() const
{
    return m_deviceOrder;
}

QList<Device> ServiceState::devices() const
{
    QList<Device> devices;
    for (const QString &uuid : m_deviceOrder)
        devices.append(m_devices.value(uuid));
    return devices;
}

bool ServiceState::assign(const QString &uuid, const QString &user)
{
    if (!changeDevice(uuid, [&user](Device &device) { device.user = user; }))
        return false;
    if (!m_users.contains(user))
        m_users.append(user);
    return true;
}

bool ServiceState::unassign(const QString &uuid)
{
    return changeDevice(uuid, [](Device &device) { device.user.reset(); });
}

bool ServiceState::setPushToken(const QString &uuid, const QString &token)
{
    return changeDevice(uuid, [&token](Device &device) { device.pushToken = token; });
}

bool ServiceState::hasUser(const QString &user) const
{
    return m_users.contains(user);
}

QByteArray ServiceState::issueToken(const QDateTime &now, int lifetimeSeconds)
{
    quint32 words[4];
    QRandomGenerator::system()->fillRange(words);
    const QByteArray token =
            QByteArray(reinterpret_cast<const char *>(words), sizeof words).toHex();
    dropExpiredTokens(now);
    m_tokens.insert(token, now.toSecsSinceEpoch() + lifetimeSeconds);
    ++m_revision;
    return token;
}

bool ServiceState::tokenValid(const QByteArray &token, const QDateTime &now) const
{
    const auto it = m_tokens.constFind(token);
    return it != m_tokens.cend() && now.toSecsSinceEpoch() < it.value();
}

QList<IssuedToken> ServiceState::tokens() const
{
    QList<IssuedToken> tokens;
    for (auto it = m_tokens.cbegin(); it != m_tokens.cend(); ++it)
        tokens.append({it.key(), QDateTime::fromSecsSinceEpoch(it.value(), Qt::UTC)});
    return tokens;
}

void ServiceState::dropExpiredTokens(const QDateTime &now)
{
    const qint64 seconds = now.toSecsSinceEpoch();
    if (m_tokens.removeIf([seconds](const auto &token) { return token.value() <= seconds; }))
        ++m_revision;
}

bool ServiceState::setCatalogue(const QJsonArray &catalogue)
{
    if (!uniqueKeys(catalogue))
        return false;
    for (const QJsonValue &category : catalogue) {
        const QJsonValue entries = category.toObject().value(QLatin1String("preferences"));
        if (!entries.isArray() || !uniqueKeys(entries.toArray()))
            return false;
    }
    m_catalogue = catalogue;
    return true;
}

QJsonArray ServiceState::catalogue() const
{
    return m_catalogue;
}

bool ServiceState::hasPreference(const QString &category, const QString &preference) const
{
    const QJsonObject entry = withKey(m_catalogue, category);
    return !withKey(entry.value(QLatin1String("preferences")).toArray(), preference).isEmpty();
}

QJsonArray ServiceState::preferences(Holder holder, const QString &id) const
{
    if (!knows(holder, id))
        return QJsonArray();
    const QJsonObject states = m_preferences.value(addressee(holder, id)).toObject();
    QJsonArray document;
    for (const QJsonValue &categoryValue : m_catalogue) {
        QJsonObject category = categoryValue.toObject();
        const QJsonObject categoryStates =
                states.value(category.value(QLatin1String("key")).toString()).toObject();
        QJsonArray entries;
        for (const QJsonValue &entryValue :
             category.value(QLatin1String("preferences")).toArray()) {
            QJsonObject entry = entryValue.toObject();
            const QJsonValue state =
                    categoryStates.value(entry.value(QLatin1String("key")).toString());
            if (state.isBool())
                entry.insert(QLatin1String("enabled"), state);
            entries.append(entry);
        }
        category.insert(QLatin1String("preferences"), entries);
        document.append(category);
    }
    return document;
}

QJsonArray ServiceState::preferenceDocument(const QString &uuid) const
{
    // An assigned user's states replace the device's own, which come back on unassign.
    const std::optional<QString> user = m_devices.value(uuid).user;
    return user ? preferences(Holder::User, *user) : preferences(Holder::Device, uuid);
}

bool ServiceState::setPreference(Holder holder, const QString &id, const QString &category,
                                 const QString &preference, bool enabled)
{
    if (!knows(holder, id) || !hasPreference(category, preference))
        return false;
    const QString key = addressee(holder, id);
    QJsonObject states = m_preferences.value(key).toObject();
    QJsonObject categoryStates = states.value(category).toObject();
    categoryStates.insert(preference, enabled);
    states.insert(category, categoryStates);
    m_preferences.insert(key, states);
    ++m_revision;
    return true;
}

bool ServiceState::changeDevice(const QString &uuid, const std::function<void(Device &)> &change)
{
    const auto it = m_devices.find(uuid);
    if (it == m_devices.end())
        return false;
    change(*it);
    ++m_revision;
    return true;
}

bool ServiceState::knows(Holder holder, const QString &id) const
{
    return holder == Holder::Device ? hasDevice(id) : hasUser(id);
}

QJsonObject ServiceState::toJson() const
{
    QJsonObject tokens;
    for (auto it = m_tokens.cbegin(); it != m_tokens.cend(); ++it)
        tokens.insert(QString::fromLatin1(it.key()), it.value());
    QJsonObject devices;
    for (const Device &device : std::as_const(m_devices)) {
        QJsonObject saved = record(device);
        if (device.registered.isValid())
            saved.insert(QLatin1String("registered_at"),
                         device.registered.toString(Qt::ISODateWithMs));
        devices.insert(device.uuid, saved);
    }
    return {{"tokens", tokens},
            {"devices", devices},
            {"device_order", QJsonArray::fromStringList(m_deviceOrder)},
            {"users", QJsonArray::fromStringList(m_users)},
            {"preferences", m_preferences}};
}

void ServiceState::load(const QJsonObject &state)
{
    const QJsonObject tokens = state.value(QLatin1String("tokens")).toObject();
    for (auto it = tokens.begin(); it != tokens.end(); ++it)
        m_tokens.insert(it.key().toLatin1(), it.value().toInteger());

    const QJsonObject devices = state.value(QLatin1String("devices")).toObject();
    for (auto it = devices.begin(); it != devices.end(); ++it)
        m_devices.insert(it.key(), deviceOf(it.key(), it.value().toObject()));
    // A JSON object keeps no order, so the order of registration is saved beside it; devices it
    // does not list (a file edited by hand) follow in key order.
    for (const QJsonValue &uuid : state.value(QLatin1String("device_order")).toArray()) {
        if (m_devices.contains(uuid.toString()) && !m_deviceOrder.contains(uuid.toString()))
            m_deviceOrder.append(uuid.toString());
    }
    for (const QString &uuid : devices.keys()) {
        if (!m_deviceOrder.contains(uuid))
            m_deviceOrder.append(uuid);
    }

    for (const QJsonValue &user : state.value(QLatin1String("users")).toArray())
        m_users.append(user.toString());
    // Files written before users were saved still name them in the device records.
    for (const Device &device : std::as_const(m_devices)) {
        if (device.user && !m_users.contains(*device.user))
            m_users.append(*device.user);
    }
    m_preferences = state.value(QLatin1String("preferences")).toObject();
    ++m_revision;
}

} // namespace bvtsim
