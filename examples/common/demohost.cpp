#include "demohost.h"

#include <Brevanti/BVT.h>

#include <QCommandLineParser>
#include <QCoreApplication>

#include <cstring>

void chooseOffscreenPlatform(int argc, char **argv)
{
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--offscreen") == 0) {
            qputenv("QT_QPA_PLATFORM", "offscreen");
            qputenv("QT_QUICK_BACKEND", "software");
        }
    }
}

DemoOptions readDemoOptions(const QCoreApplication &app, const QString &description)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(description);
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

    DemoOptions options{parser.value(clientId), parser.value(clientSecret), parser.value(user),
                        parser.value(screenshots), nullptr};
    if (parser.isSet(service)) {
        options.router = std::make_unique<bvt::ServiceRouter>(QUrl(parser.value(service)));
        bvt::setNetworkAccessManager(options.router.get());
    }
    return options;
}
