// A small host application: it initialises the library (which registers the device on the first
// run), waits for the device identifier, then ties the device to a user and releases it again,
// printing what each callback receives. The library's own log lines go to standard error.
#include "loopbackrouter.h"

#include <Brevanti/BVT.h>

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

void assignAndUnassign(const QString &user)
{
    const auto done = [] {
        out << "User now: " << (BVT::currentUser().isNull() ? "(none)" : BVT::currentUser())
            << Qt::endl;
        QCoreApplication::quit();
    };
    const auto unassign = [done] {
        out << "User now: " << BVT::currentUser() << Qt::endl;
        BVT::unassignDevice(printSuccess("Unassign", done), printFailure("Unassign", done));
    };
    BVT::assignDeviceToUser(user, printSuccess("Assign " + user, unassign),
                            printFailure("Assign " + user, done));
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
    BVT::initWithLaunchOptions({}, parser.value(clientId), parser.value(clientSecret));
    whenRegistered([name = parser.value(user)] { assignAndUnassign(name); });
    const int status = app.exec();
    bvt::setNetworkAccessManager(nullptr);
    return status;
}
