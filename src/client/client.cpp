#include <Brevanti/Client.h>

#include "clientprivate.h"
#include "core/identifierevents.h"
#include "core/screens.h"
#include "devicecalls.h"
#include "identifiers.h"
#include "notify/carddefaults.h"
#include "notify/notifycalls.h"
#include "replyprivate.h"
#include "session.h"
#include "verb.h"

#include "core/log.h"

#include <QCoreApplication>
#include <QPointer>

namespace bvt {

bool ClientPrivate::Announced::update(const QString &now)
{
    if (now == value && now.isNull() == value.isNull())
        return false;
    value = now;
    return true;
}

Client *Client::instance()
{
    static QPointer<Client> client;
    if (!client)
        client = new Client(QCoreApplication::instance());
    return client;
}

Client::Client(QObject *parent) : QObject(parent), d(std::make_unique<ClientPrivate>())
{
    d->q = this;
    // The store announces every write; the client announces what changed of what it shows.
    const IdentifierEvents &events = IdentifierEvents::instance();
    connect(&events, &IdentifierEvents::deviceIdChanged, this,
            [this] { d->announce(d->deviceId, deviceId(), &Client::deviceIdChanged); });
    connect(&events, &IdentifierEvents::userIdChanged, this,
            [this] { d->announce(d->user, user(), &Client::userChanged); });
    connect(&events, &IdentifierEvents::deviceTokenChanged, this,
            [this] { d->announce(d->pushToken, pushToken(), &Client::pushTokenChanged); });
}

Client::~Client() = default;

// Until the library is initialised it reads no identifier; from then on the stored ones.
QString Client::deviceId() const
{
    return d->session ? identifiers::deviceId() : QString();
}

QString Client::user() const
{
    return d->session ? identifiers::userId() : QString();
}

QString Client::pushToken() const
{
    return d->session ? identifiers::deviceToken() : QString();
}

bool Client::isInitialised() const
{
    return d->session != nullptr;
}

bool Client::widgetScreensFollowPalette() const
{
    return d->widgetScreensFollowPalette;
}

void Client::setWidgetScreensFollowPalette(bool follow)
{
    if (follow == d->widgetScreensFollowPalette)
        return;
    d->widgetScreensFollowPalette = follow;
    Q_EMIT widgetScreensFollowPaletteChanged();
}

void ClientPrivate::announce(Announced &announced, const QString &now, void (Client::*changed)())
{
    if (announced.update(now))
        Q_EMIT(q->*changed)();
}

Start ClientPrivate::initialise(const QString &clientId, const QString &clientSecret,
                                const Completion &done)
{
    const bool wasInitialised = session != nullptr;
    session = Session::create(clientId, clientSecret);
    const Start start = registerDevice(session, done);
    announce(deviceId, q->deviceId(), &Client::deviceIdChanged);
    if (!wasInitialised)
        Q_EMIT q->initialisedChanged();
    announce(user, q->user(), &Client::userChanged);
    announce(pushToken, q->pushToken(), &Client::pushTokenChanged);
    return start;
}

Start ClientPrivate::send(const Verb &verb, const QString &path, const BVTParameters &parameters,
                          const Completion &done)
{
    if (!session)
        return {Start::NotInitialised};
    session->send(verb, path, parameters, done);
    return {Start::Sent};
}

Start ClientPrivate::assignDevice(const QString &user, const Completion &done)
{
    return session ? bvt::assignDevice(session, user, done) : Start{Start::NotInitialised};
}

Start ClientPrivate::unassignDevice(const Completion &done)
{
    return session ? bvt::unassignDevice(session, done) : Start{Start::NotInitialised};
}

Start ClientPrivate::enablePush(const QVariant &pushToken, const Completion &done)
{
    return bvt::enablePush(session, pushToken, done);
}

Start ClientPrivate::fetchPreferences(const Completion &done)
{
    return bvt::fetchPreferences(session, done);
}

Start ClientPrivate::switchPreference(bool enable, const QString &category,
                                      const QString &preference, const Completion &done)
{
    return bvt::switchPreference(session, enable, category, preference, done);
}

void ClientPrivate::verifyPushEnabled()
{
    bvt::verifyPushEnabled(session);
}

void ClientPrivate::setPushToken(const QString &token)
{
    if (session)
        identifiers::setDeviceToken(token);
}

void ClientPrivate::requestCard(const CardRequest &request)
{
    if (!permissionCardWanted() || presentCardWhereShown(request))
        return;
    warnNothingIsShown();
    Q_EMIT q->cardFinished(Client::CardNotShown);
}

bool permissionCardWanted()
{
    Client *client = Client::instance();
    if (client->pushToken().isNull())
        return true;
    log("You have already accepted push notifications!");
    Q_EMIT client->cardFinished(Client::CardNotShown);
    return false;
}

Reply *Client::initialise(const QString &clientId, const QString &clientSecret)
{
    return Reply::Private::track(this, [&](const Completion &done) {
        return d->initialise(clientId, clientSecret, done);
    });
}

Reply *Client::assignDeviceToUser(const QString &user)
{
    return Reply::Private::track(
            this, [&](const Completion &done) { return d->assignDevice(user, done); });
}

Reply *Client::unassignDevice()
{
    return Reply::Private::track(this,
                                 [&](const Completion &done) { return d->unassignDevice(done); });
}

Reply *Client::enableDevice(const QVariant &pushToken)
{
    return Reply::Private::track(
            this, [&](const Completion &done) { return d->enablePush(pushToken, done); });
}

Reply *Client::fetchPreferences()
{
    return Reply::Private::track(this,
                                 [&](const Completion &done) { return d->fetchPreferences(done); });
}

Reply *Client::setPreferenceEnabled(const QString &category, const QString &preference,
                                    bool enabled)
{
    return Reply::Private::track(this, [&](const Completion &done) {
        return d->switchPreference(enabled, category, preference, done);
    });
}

void Client::requestCustomPreferences()
{
    d->requestCard({QVariant::fromValue(carddefaults::color()),
                    QVariant::fromValue(carddefaults::icon()), carddefaults::header(),
                    carddefaults::subHeader()});
}

Reply *Client::get(const QString &path, const QVariantMap &parameters)
{
    return Reply::Private::track(this, [&](const Completion &done) {
        return d->send(Verb::get, path, parameters, done);
    });
}

Reply *Client::post(const QString &path, const QVariantMap &parameters)
{
    return Reply::Private::track(this, [&](const Completion &done) {
        return d->send(Verb::post, path, parameters, done);
    });
}

Reply *Client::patch(const QString &path, const QVariantMap &parameters)
{
    return Reply::Private::track(this, [&](const Completion &done) {
        return d->send(Verb::patch, path, parameters, done);
    });
}

} // namespace bvt
