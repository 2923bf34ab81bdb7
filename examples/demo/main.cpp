// The demo host: a phone-sized window with a home screen from which the user signs in and out,
// is asked for notifications and opens the notification settings. With --screenshots it walks a
// first run by itself and saves a picture of each step. The library's log goes to standard error.
#include "demohost.h"
#include "homeviewcontroller.h"
#include "standinoperatingsystem.h"
#include "walkthrough.h"

#include <Brevanti/Client.h>
#include <Brevanti/Network.h>
#include <Brevanti/platform/NavigationController.h>
#include <Brevanti/platform/Screen.h>
#include <Brevanti/platform/Window.h>

#include <QApplication>
#include <QTimer>

#include <memory>

int main(int argc, char **argv)
{
    chooseOffscreenPlatform(argc, argv); // before the application object chooses it
    QApplication app(argc, argv);
    QCoreApplication::setOrganizationName(QStringLiteral("Brevanti"));
    QCoreApplication::setApplicationName(QStringLiteral("brevanti-demo"));

    const DemoOptions options = readDemoOptions(app, QStringLiteral("Brevanti demo host"));
    bvt::Screen::mainScreen().setPhoneSize(QSize(375, 667));

    bvt::Window window;
    auto *home = new HomeViewController(options.user);
    window.setRootViewController(new bvt::NavigationController(home));
    window.widget()->setWindowTitle(home->title());

    // On a phone the operating system hands the host the token once the user allowed
    // notifications; passing it on is the host's job.
    bvtstandin::StandInOperatingSystem system;
    system.setTokenToHandOut(bvtstandin::StandInOperatingSystem::generateToken());
    system.install();
    bvt::Client *brevanti = bvt::Client::instance();
    QObject::connect(&system, &bvtstandin::StandInOperatingSystem::deviceTokenReceived, home,
                     [brevanti, home](const QByteArray &token) {
                         brevanti->enableDevice(token)->then(home, [home](bvt::Reply *reply) {
                             home->showOutcome(reply->error() == bvt::Reply::NoError
                                                       ? QObject::tr("Push notifications enabled.")
                                                       : QObject::tr("Enabling push failed: %1")
                                                                 .arg(reply->errorString()));
                         });
                     });

    brevanti->initialise(options.clientId, options.clientSecret);
    window.show();

    std::unique_ptr<Walkthrough> walkthrough;
    if (!options.screenshots.isEmpty()) {
        walkthrough = std::make_unique<Walkthrough>(&window, home, options.screenshots);
        QTimer::singleShot(0, walkthrough.get(), &Walkthrough::start);
    }
    const int status = app.exec();
    bvt::setNetworkAccessManager(nullptr);
    return status;
}
