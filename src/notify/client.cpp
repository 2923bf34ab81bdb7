#include <Brevanti/Client.h>

#include "client/callwitness.h"
#include "client/facade.h"
#include "client/replyprivate.h"
#include "core/identifierevents.h"

#include <Brevanti/BVT.h>
#include <Brevanti/BVTNotify.h>

#include <QCoreApplication>
#include <QPointer>

#include <stdexcept>

namespace bvt {

namespace {

// A value as last announced, so that a change is announced once and a write of the same value not
// at all.
struct Announced
{
    QString value;

    bool update(const QString &now)
    {
        if (now == value && now.isNull() == value.isNull())
            return false;
        value = now;
        return true;
    }
};

} // namespace

class Client::Private
{
public:
    Announced deviceId{BVT::currentDevice()};
    Announced user{BVT::currentUser()};
    Announced pushToken{BVT::currentDeviceToken()};
    bool initialised = facadeInitialised();
};

Client *Client::instance()
{
    static QPointer<Client> client;
    if (!client)
        client = new Client(QCoreApplication::instance());
    return client;
}

Client::Client(QObject *parent) : QObject(parent), d(std::make_unique<Private>())
{
    // The store announces every write; the facade's first manager makes every value readable.
    const IdentifierEvents &events = IdentifierEvents::instance();
    connect(&events, &IdentifierEvents::deviceIdChanged, this, [this] {
        if (d->deviceId.update(BVT::currentDevice()))
            Q_EMIT deviceIdChanged();
        if (!d->initialised && facadeInitialised()) {
            d->initialised = true;
            Q_EMIT initialisedChanged();
        }
    });
    connect(&events, &IdentifierEvents::userIdChanged, this, [this] {
        if (d->user.update(BVT::currentUser()))
            Q_EMIT userChanged();
    });
    connect(&events, &IdentifierEvents::deviceTokenChanged, this, [this] {
        if (d->pushToken.update(BVT::currentDeviceToken()))
            Q_EMIT pushTokenChanged();
    });
}

Client::~Client() = default;

QString Client::deviceId() const
{
    return BVT::currentDevice();
}

QString Client::user() const
{
    return BVT::currentUser();
}

QString Client::pushToken() const
{
    return BVT::currentDeviceToken();
}

bool Client::isInitialised() const
{
    return facadeInitialised();
}

Reply *Client::witness(const std::function<void()> &call, Reply::Error nothingSent)
{
    auto *reply = new Reply(this);
    CallWitness witness([reply = QPointer<Reply>(reply)](const Outcome &outcome) {
        if (reply)
            reply->d->end(reply, outcome);
    });
    try {
        call();
    } catch (const std::invalid_argument &refusal) {
        reply->d->end(reply, Reply::RefusedArgumentError, QString::fromUtf8(refusal.what()));
        return reply;
    }
    if (witness.reached()) {
        reply->d->callReturned = true;
        return reply;
    }
    if (nothingSent == Reply::NoError)
        reply->d->end(reply, Reply::NoError, QString());
    else if (!isInitialised())
        reply->d->end(reply, nothingSent, QStringLiteral("The library is not initialised"));
    else
        reply->d->end(reply, nothingSent,
                      QStringLiteral("The device has no identifier yet: it is not registered"));
    return reply;
}

Reply *Client::initialise(const QString &clientId, const QString &clientSecret)
{
    return witness([&] { BVT::initWithLaunchOptions({}, clientId, clientSecret); }, Reply::NoError);
}

Reply *Client::assignDeviceToUser(const QString &user)
{
    return witness([&] { BVT::assignDeviceToUser(user); }, Reply::NotRegisteredError);
}

Reply *Client::unassignDevice()
{
    return witness([] { BVT::unassignDevice(); }, Reply::NotRegisteredError);
}

Reply *Client::enableDevice(const QVariant &pushToken)
{
    return witness([&] { BVTNotify::enableDevice(pushToken); }, Reply::NotRegisteredError);
}

Reply *Client::fetchPreferences()
{
    return witness([] { BVTNotify::getPreferences(nullptr); }, Reply::NotRegisteredError);
}

Reply *Client::setPreferenceEnabled(const QString &category, const QString &preference,
                                    bool enabled)
{
    return witness(
            [&] {
                if (enabled)
                    BVTNotify::enablePreferenceWithCategory(category, preference);
                else
                    BVTNotify::disablePreferenceWithCategory(category, preference);
            },
            Reply::NotRegisteredError);
}

void Client::requestCustomPreferences()
{
    BVTNotify::requestCustomPreferences();
}

Reply *Client::get(const QString &path, const QVariantMap &parameters)
{
    return witness([&] { BVT::getUrl(path, parameters, nullptr, nullptr); },
                   Reply::NotRegisteredError);
}

Reply *Client::post(const QString &path, const QVariantMap &parameters)
{
    return witness([&] { BVT::postUrl(path, parameters, nullptr, nullptr); },
                   Reply::NotRegisteredError);
}

Reply *Client::patch(const QString &path, const QVariantMap &parameters)
{
    return witness([&] { BVT::patchUrl(path, parameters, nullptr, nullptr); },
                   Reply::NotRegisteredError);
}

} // namespace bvt
