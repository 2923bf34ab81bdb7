// A Qt Quick host as the README builds one: a QGuiApplication, the QML module, and the library
// routed to the local service named on the command line. Its window walks a first run by itself,
// in whichever Qt Quick Controls style the environment chose, and requires every text of the card
// and of its preferences to read; the exit status says whether every step happened.
#include <Brevanti/BVT.h>
#include <Brevanti/BVTNotify.h>
#include <Brevanti/Client.h>
#include <Brevanti/ServiceRouter.h>

#include "quicktexts.h"

#include <QGuiApplication>
#include <QQmlApplicationEngine>
#include <QQmlContext>
#include <QtQml/qqmlextensionplugin.h>

Q_IMPORT_QML_PLUGIN(BrevantiPlugin)

// What the window shows that does not read (4.5:1), for the walk to fail on; empty when all does.
class Readability : public QObject
{
    Q_OBJECT
public:
    Q_INVOKABLE QString unreadable(QQuickWindow *window, const QString &where) const
    {
        return window ? readability::unreadableTexts(*window, where).join('\n')
                      : QStringLiteral("no window");
    }
};

int main(int argc, char **argv)
{
    QGuiApplication app(argc, argv);
    if (app.arguments().size() != 2) {
        qCritical("usage: quick-host SERVICE-URL");
        return 2;
    }
    QCoreApplication::setOrganizationName(QStringLiteral("Brevanti Host"));
    QCoreApplication::setApplicationName(QStringLiteral("quick-host"));
    bvt::setNetworkAccessManager(new bvt::ServiceRouter(QUrl(app.arguments().at(1)), &app));
    BVT::initWithLaunchOptions({}, QStringLiteral("demo-client"), QStringLiteral("demo-secret"));
    // The card from C++ once the device is registered, and its outcome: Core, no Qt Widgets.
    QObject::connect(bvt::Client::instance(), &bvt::Client::deviceIdChanged, &app,
                     [] { BVTNotify::requestCustomPreferences(); });
    QObject::connect(bvt::Client::instance(), &bvt::Client::cardFinished, &app,
                     [](bvt::Client::CardOutcome outcome) {
                         qInfo("quick-host: the card ended: %d", int(outcome));
                     });

    QQmlApplicationEngine engine;
    Readability readability;
    engine.rootContext()->setContextProperty(QStringLiteral("readability"), &readability);
    engine.load(QUrl(QStringLiteral("qrc:/host/quick/Main.qml")));
    return engine.rootObjects().isEmpty() ? 3 : app.exec();
}

#include "main.moc"
