// The demo host: a phone-sized window with a home screen from which the user signs in and out,
// is asked for notifications and opens the notification settings. With --screenshots it walks a
// first run by itself and saves a picture of each step. The library's log goes to standard error.
#include "homeviewcontroller.h"
#include "loopbackrouter.h"
#include "standinoperatingsystem.h"
#include "walkthrough.h"

#include <Brevanti/BVT.h>
#include <Brevanti/BVTNotify.h>
#include <Brevanti/platform/NavigationController.h>
#include <Brevanti/platform/Screen.h>
#include <Brevanti/platform/Window.h>

#include <QApplication>
#include <QCommandLineParser>
#include <QPointer>
#include <QTimer>

#include <cstring>
#include <memory>

int main(int argc, char **argv)
{
    // The platform is chosen when the application object is made, before the options are parsed.
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--offscreen") == 0)
            qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    QApplication app(argc, argv);
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
    bvt::Screen::mainScreen().setPhoneSize(QSize(375, 667));

    bvt::Window window;
    auto *home = new HomeViewController(parser.value(user));
    window.setRootViewController(new bvt::NavigationController(home));
    window.widget()->setWindowTitle(home->title());

    // On a phone the operating system hands the host the token once the user allowed
    // notifications; passing it on is the host's job.
    bvtstandin::StandInOperatingSystem system;
    system.setTokenToHandOut(bvtstandin::StandInOperatingSystem::generateToken());
    system.install();
    const QPointer<HomeViewController> shown(home);
    QObject::connect(&system, &bvtstandin::StandInOperatingSystem::deviceTokenReceived, home,
                     [shown](const QByteArray &token) {
                         BVTNotify::enableDevice(
                                 token,
                                 [shown](const QVariant &) {
                                     if (shown)
                                         shown->showOutcome(QObject::tr("Push notifications "
                                                                        "enabled."));
                                 },
                                 [shown](const QString &text) {
                                     if (shown)
                                         shown->showOutcome(
                                                 QObject::tr("Enabling push failed: %1")
                                                         .arg(text.isNull()
                                                                      ? QObject::tr("no answer")
                                                                      : text));
                                 });
                     });

    BVT::initWithLaunchOptions({}, parser.value(clientId), parser.value(clientSecret));
    window.show();

    std::unique_ptr<Walkthrough> walkthrough;
    if (parser.isSet(screenshots)) {
        walkthrough = std::make_unique<Walkthrough>(&window, home, parser.value(screenshots));
        QTimer::singleShot(0, walkthrough.get(), &Walkthrough::start);
    }
    const int status = app.exec();
    bvt::setNetworkAccessManager(nullptr);
    return status;
}
