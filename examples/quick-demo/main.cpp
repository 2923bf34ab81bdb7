// The demo host on Qt Quick: a phone-sized window from which the user is asked for notifications,
// opens the notification settings and signs in, all from QML. With --screenshots it walks a first
// run by itself and saves a picture of each step. The library's log goes to standard error.
#include "demohost.h"
#include "standinoperatingsystem.h"
#include "walkthrough.h"

#include <Brevanti/Client.h>
#include <Brevanti/Network.h>

#include <QGuiApplication>
#include <QQmlApplicationEngine>
#include <QQuickWindow>
#include <QTimer>
#include <QtQml/qqmlextensionplugin.h>

#include <memory>

Q_IMPORT_QML_PLUGIN(BrevantiPlugin)

int main(int argc, char **argv)
{
    chooseOffscreenPlatform(argc, argv); // before the application object chooses it
    QGuiApplication app(argc, argv);
    QCoreApplication::setOrganizationName(QStringLiteral("Brevanti"));
    QCoreApplication::setApplicationName(QStringLiteral("brevanti-quick-demo"));

    const DemoOptions options =
            readDemoOptions(app, QStringLiteral("Brevanti demo host on Qt Quick"));

    // On a phone the operating system hands the host the token once the user allowed
    // notifications; passing it on is the host's job.
    bvtstandin::StandInOperatingSystem system;
    system.setTokenToHandOut(bvtstandin::StandInOperatingSystem::generateToken());
    system.install();
    bvt::Client *brevanti = bvt::Client::instance();
    QObject::connect(&system, &bvtstandin::StandInOperatingSystem::deviceTokenReceived, brevanti,
                     [brevanti](const QByteArray &token) { brevanti->enableDevice(token); });

    brevanti->initialise(options.clientId, options.clientSecret);
    QQmlApplicationEngine engine;
    engine.setInitialProperties({{QStringLiteral("user"), options.user}});
    engine.load(QUrl(QStringLiteral("qrc:/quick-demo/Main.qml")));
    auto *window = engine.rootObjects().isEmpty()
            ? nullptr
            : qobject_cast<QQuickWindow *>(engine.rootObjects().constFirst());
    if (!window)
        return 1;

    std::unique_ptr<Walkthrough> walkthrough;
    if (!options.screenshots.isEmpty()) {
        walkthrough = std::make_unique<Walkthrough>(window, options.screenshots);
        QTimer::singleShot(0, walkthrough.get(), &Walkthrough::start);
    }
    const int status = app.exec();
    bvt::setNetworkAccessManager(nullptr);
    return status;
}
