#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QHash>
#include <QJsonArray>
#include <QJsonObject>
#include <QList>
#include <QString>
#include <QStringList>

#include <functional>
#include <optional>

namespace bvtsim {

// A device as the service keeps it.
struct Device
{
    QString uuid;
    QJsonObject description; // what the library sent: "os", "os_version", "model", "manufacturer"
    std::optional<QString> user;      // none while no user is assigned
    std::optional<QString> pushToken; // none until sent; empty when the platform has none
    QDateTime registered;             // invalid for a device saved before the service kept it
};

// A bearer token the service issued.
struct IssuedToken
{
    QByteArray token;
    QDateTime expiry; // valid until just before
};

// Whose preference states: a device keeps its own apart from those of the user assigned to it.
enum class Holder { Device, User };

// What the service knows: its devices, the users assigned to them, the bearer tokens it issued,
// the preference catalogue and the states switched for each device and user. All but the
// catalogue is saved in the state file, in the JSON form toJson writes and load reads.
class ServiceState
{
public:
    ServiceState(); // with the built-in catalogue

    // A new device with a fresh uuid, which is returned.
    QString registerDevice(const QJsonObject &description, const QDateTime &when);
    bool hasDevice(const QString &uuid) const;
    // The device with every member, "user" and "push_token" null when unset, as the library
    // registered it; an empty object when the uuid is unknown.
    QJsonObject device(const QString &uuid) const;
    QStringList deviceIds() const; // in the order they were issued
    QList<Device> devices() const; // in the order they were issued
    // Each false, changing nothing, when the uuid is unknown.
    bool assign(const QString &uuid, const QString &user);
    bool unassign(const QString &uuid);
    bool setPushToken(const QString &uuid, const QString &token);
    bool hasUser(const QString &user) const;      // whether a device was ever assigned to the user
    QStringList users() const { return m_users; } // in the order they were first assigned

    // A new random token valid for lifetimeSeconds from now; expired tokens are dropped first.
    QByteArray issueToken(const QDateTime &now, int lifetimeSeconds);
    bool tokenValid(const QByteArray &token, const QDateTime &now) const;
    QList<IssuedToken> tokens() const;
    // Expired tokens are never valid again, so a long run would only pile them up.
    void dropExpiredTokens(const QDateTime &now);

    // Categories of preferences, each {"name", "key", "preferences": [{"name", "key", "enabled"}]}
    // with "enabled" the default state. Members other than the keys and "preferences" are served
    // as given. False, keeping the current catalogue, when a key is not a non-empty string unique
    // among its siblings or "preferences" is no array.
    bool setCatalogue(const QJsonArray &catalogue);
    QJsonArray catalogue() const;
    bool hasPreference(const QString &category, const QString &preference) const;
    // The catalogue with the states switched for the device or user; an empty array when the
    // holder is unknown.
    QJsonArray preferences(Holder holder, const QString &id) const;
    // What the device is served: its user's states, or its own while it has no user.
    QJsonArray preferenceDocument(const QString &uuid) const;
    // False, changing nothing, when the holder or the preference is unknown.
    bool setPreference(Holder holder, const QString &id, const QString &category,
                       const QString &preference, bool enabled);

    QJsonObject toJson() const;
    // Adds what a state file holds; its preference states replace the current ones.
    void load(const QJsonObject &state);

    // Counts the changes to what the state file holds, so that a change can be told to save.
    quint64 revision() const { return m_revision; }

private:
    bool changeDevice(const QString &uuid, const std::function<void(Device &)> &change);
    bool knows(Holder holder, const QString &id) const;

    QHash<QString, Device> m_devices;
    QStringList m_deviceOrder;          // uuids in the order they were issued
    QStringList m_users;                // every user a device was ever assigned to
    QHash<QByteArray, qint64> m_tokens; // token -> expiry, seconds since the epoch
    QJsonArray m_catalogue;
    // "device:<uuid>" or "user:<identifier>" -> category key -> preference key -> bool
    QJsonObject m_preferences;
    quint64 m_revision = 0;
};

} // namespace bvtsim
