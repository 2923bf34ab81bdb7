// The demo host on Qt Quick: a phone-sized window from which the user is asked for notifications,
// opens the notification settings and signs in, all from QML. With --screenshots it walks a first
// run by itself and saves a picture of each step. The library's log goes to standard error.
#include "loopbackrouter.h"
#include "standinoperatingsystem.h"
#include "walkthrough.h"

#include <Brevanti/BVT.h>
#include <Brevanti/BVTNotify.h>

#include <QCommandLineParser>
#include <QGuiApplication>
#include <QQmlApplicationEngine>
#include <QQuickWindow>
#include <QTimer>
#include <QtQml/qqmlextensionplugin.h>

#include <cstring>
#include <memory>

Q_IMPORT_QML_PLUGIN(BrevantiPlugin)

int main(int argc, char **argv)
{
    // The platform is chosen when the application object is made, before the options are parsed.
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--offscreen") == 0) {
            qputenv("QT_QPA_PLATFORM", "offscreen");
            qputenv("QT_QUICK_BACKEND", "software");
        }
    }
    QGuiApplication app(argc, argv);
    QCoreApplication::setOrganizationName(QStringLiteral("Brevanti"));
    QCoreApplication::setApplicationName(QStringLiteral("brevanti-quick-demo"));

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Brevanti demo host on Qt Quick"));
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
    const QCommandLineOption offscreen(QStringLiteral("offscreen"),
                                       QStringLiteral("Draw the window without showing it."));
    const QCommandLineOption screenshots(
            QStringLiteral("screenshots"),
            QStringLiteral("Walk a first run by itself, save a picture of each step in this "
                           "directory, and exit."),
            QStringLiteral("dir"));
    parser.addOptions({service, clientId, clientSecret, user, offscreen, screenshots});
    parser.process(app);

    std::unique_ptr<bvtsim::LoopbackRouter> router;
    if (parser.isSet(service)) {
        router = std::make_unique<bvtsim::LoopbackRouter>(QUrl(QStringLiteral(BREVANTI_ORIGIN)),
                                                          QUrl(parser.value(service)));
        bvt::setNetworkAccessManager(router.get());
    }

    // On a phone the operating system hands the host the token once the user allowed
    // notifications; passing it on is the host's job.
    bvtstandin::StandInOperatingSystem system;
    system.setTokenToHandOut(bvtstandin::StandInOperatingSystem::generateToken());
    system.install();
    QObject::connect(&system, &bvtstandin::StandInOperatingSystem::deviceTokenReceived,
                     [](const QByteArray &token) { BVTNotify::enableDevice(token); });

    BVT::initWithLaunchOptions({}, parser.value(clientId), parser.value(clientSecret));
    QQmlApplicationEngine engine;
    engine.setInitialProperties({{QStringLiteral("user"), parser.value(user)}});
    engine.load(QUrl(QStringLiteral("qrc:/quick-demo/Main.qml")));
    auto *window = engine.rootObjects().isEmpty()
            ? nullptr
            : qobject_cast<QQuickWindow *>(engine.rootObjects().constFirst());
    if (!window)
        return 1;

    std::unique_ptr<Walkthrough> walkthrough;
    if (parser.isSet(screenshots)) {
        walkthrough = std::make_unique<Walkthrough>(window, parser.value(screenshots));
        QTimer::singleShot(0, walkthrough.get(), &Walkthrough::start);
    }
    const int status = app.exec();
    bvt::setNetworkAccessManager(nullptr);
    return status;
}
