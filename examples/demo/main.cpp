// A small host application: it initialises the library (which registers the device on the first
// run), waits for the device identifier, enables push with a token from the stand-in operating
// system, fetches the preference document, switches one preference off and on, then ties the
// device to a user and releases it again, printing what each callback receives. The library's own
// log lines go to standard error.
#include "loopbackrouter.h"
#include "standinoperatingsystem.h"

#include <Brevanti/BVT.h>
#include <Brevanti/BVTNotify.h>

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QJsonDocument>
#include <QTextStream>
#include <QTimer>

#include <functional>

namespace {

QTextStream out(stdout);

QString compact(const QVariant &value)
{
    return QString::fromUtf8(QJsonDocument::fromVariant(value).toJson(QJsonDocument::Compact));
}

// Prints a call's outcome, then goes on with next.
BVTSuccessBlock printSuccess(const QString &what, const std::function<void()> &next)
{
    return [what, next](const QVariant &response) {
        out << what << " succeeded: " << compact(response) << Qt::endl;
        next();
    };
}

BVTFailureBlock printFailure(const QString &what, const std::function<void()> &next)
{
    return [what, next](const QString &text) {
        out << what << " failed: " << (text.isNull() ? QStringLiteral("(no answer)") : text)
            << Qt::endl;
        next();
    };
}

// The registration reports to nobody; a host learns of the identifier by asking for it.
void whenRegistered(const std::function<void()> &next, int triesLeft = 200)
{
    if (!BVT::currentDevice().isNull()) {
        out << "Device identifier: " << BVT::currentDevice() << Qt::endl;
        next();
        return;
    }
    if (triesLeft == 0) {
        out << "The device was not registered." << Qt::endl;
        QCoreApplication::exit(1);
        return;
    }
    QTimer::singleShot(50, [next, triesLeft] { whenRegistered(next, triesLeft - 1); });
}

using Step = std::function<void(const std::function<void()> &next)>;

// Runs the steps one after the other, each when the one before has called next; then quits.
void runSteps(const QList<Step> &steps, int index = 0)
{
    if (index == steps.size()) {
        QCoreApplication::quit();
        return;
    }
    steps.at(index)([steps, index] { runSteps(steps, index + 1); });
}

// On a phone the operating system hands the host a token after it asked for permission; the host
// passes it on. With a token stored already, the library only logs it.
Step enablePush(bvtstandin::StandInOperatingSystem *system)
{
    return [system](const std::function<void()> &next) {
        if (!BVT::currentDeviceToken().isNull()) {
            BVTNotify::verifyPushEnabled();
            next();
            return;
        }
        QObject::connect(system, &bvtstandin::StandInOperatingSystem::deviceTokenReceived,
                         [next](const QByteArray &token) {
                             BVTNotify::enableDevice(token, printSuccess("Enable push", next),
                                                     printFailure("Enable push", next));
                         });
        BVTNotify::verifyPushEnabled();
    };
}

// Fetches the document, then switches its first preference off and on again.
Step switchFirstPreference()
{
    return [](const std::function<void()> &next) {
        BVTNotify::getPreferences(
                [next](const QVariant &document) {
                    out << "Preferences: " << compact(document) << Qt::endl;
                    const QVariantMap category = document.toList().value(0).toMap();
                    const QVariantMap preference =
                            category.value("preferences").toList().value(0).toMap();
                    const QString categoryKey = category.value("key").toString();
                    const QString preferenceKey = preference.value("key").toString();
                    if (categoryKey.isEmpty() || preferenceKey.isEmpty()) {
                        next();
                        return;
                    }
                    const QString name = categoryKey + "/" + preferenceKey;
                    const auto switchOn = [=] {
                        BVTNotify::enablePreferenceWithCategory(
                                categoryKey, preferenceKey, printSuccess("Switch on " + name, next),
                                printFailure("Switch on " + name, next));
                    };
                    BVTNotify::disablePreferenceWithCategory(
                            categoryKey, preferenceKey,
                            printSuccess("Switch off " + name, switchOn),
                            printFailure("Switch off " + name, switchOn));
                },
                printFailure("Preferences", next));
    };
}

Step assign(const QString &user)
{
    return [user](const std::function<void()> &next) {
        BVT::assignDeviceToUser(user, printSuccess("Assign " + user, next),
                                printFailure("Assign " + user, next));
    };
}

Step unassign()
{
    return [](const std::function<void()> &next) {
        BVT::unassignDevice(printSuccess("Unassign", next), printFailure("Unassign", next));
    };
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setOrganizationName(QStringLiteral("Brevanti"));
    QCoreApplication::setApplicationName(QStringLiteral("brevanti-demo"));
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Brevanti demo host"));
    parser.addHelpOption();
    const QCommandLineOption service(QStringLiteral("service"),
                                     QStringLiteral("Send the library's requests to this origin."),
                                     QStringLiteral("url"));
    const QCommandLineOption clientId(QStringLiteral("client-id"), QStringLiteral("Client id."),
                                      QStringLiteral("id"), QStringLiteral("demo-client"));
    const QCommandLineOption clientSecret(QStringLiteral("client-secret"),
                                          QStringLiteral("Client secret."),
                                          QStringLiteral("secret"), QStringLiteral("demo-secret"));
    const QCommandLineOption user(QStringLiteral("user"), QStringLiteral("The user to sign in."),
                                  QStringLiteral("id"), QStringLiteral("demo-user"));
    parser.addOptions({service, clientId, clientSecret, user});
    parser.process(app);

    std::unique_ptr<bvtsim::LoopbackRouter> router;
    if (parser.isSet(service)) {
        router = std::make_unique<bvtsim::LoopbackRouter>(QUrl(QStringLiteral(BREVANTI_ORIGIN)),
                                                          QUrl(parser.value(service)));
        bvt::setNetworkAccessManager(router.get());
    }
    bvtstandin::StandInOperatingSystem system;
    system.setTokenToHandOut(bvtstandin::StandInOperatingSystem::generateToken());
    system.install();

    BVT::initWithLaunchOptions({}, parser.value(clientId), parser.value(clientSecret));
    const QList<Step> steps{enablePush(&system), switchFirstPreference(),
                            assign(parser.value(user)), unassign()};
    whenRegistered([steps] { runSteps(steps); });
    const int status = app.exec();
    bvt::setNetworkAccessManager(nullptr);
    return status;
}
