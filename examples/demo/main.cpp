// A small host application: it initialises the library, points its network access at the given
// service, and makes one GET, one POST and one PATCH, printing what each callback receives.
#include "loopbackrouter.h"

#include <Brevanti/BVT.h>
#include <Brevanti/BVTManager.h>

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QJsonDocument>
#include <QTextStream>

#include <functional>

namespace {

QTextStream out(stdout);

QString compact(const QVariant &value)
{
    return QString::fromUtf8(QJsonDocument::fromVariant(value).toJson(QJsonDocument::Compact));
}

// Runs the three requests one after the other, then quits.
void run(const std::shared_ptr<BVTManager> &manager)
{
    using Step = std::function<void(std::function<void()>)>;
    auto report = [](const QString &what, std::function<void()> next) {
        return std::make_pair(BVTSuccessBlock([what, next](const QVariant &response) {
                                  out << what << " succeeded: " << compact(response) << Qt::endl;
                                  next();
                              }),
                              BVTFailureBlock([what, next](const QString &text) {
                                  out << what
                                      << " failed: " << (text.isNull() ? "(no answer)" : text)
                                      << Qt::endl;
                                  next();
                              }));
    };
    const QList<Step> steps{
            [=](std::function<void()> next) {
                auto [success, failure] = report("GET /echo", next);
                manager->getUrl("/echo", {{"greeting", "hello world"}}, success, failure);
            },
            [=](std::function<void()> next) {
                auto [success, failure] = report("POST /echo", next);
                manager->postUrl("/echo",
                                 {{"device", BVTParameters{{"os", "ios"}, {"model", "Qt"}}}},
                                 success, failure);
            },
            [=](std::function<void()> next) {
                auto [success, failure] = report("PATCH /echo", next);
                manager->patchUrl("/echo", {{"tags", QVariantList{"news", "offers"}}}, success,
                                  failure);
            },
    };
    auto runFrom = std::make_shared<std::function<void(int)>>();
    *runFrom = [steps, runFrom](int index) {
        if (index == steps.size()) {
            QCoreApplication::quit();
            return;
        }
        steps.at(index)([runFrom, index] { (*runFrom)(index + 1); });
    };
    (*runFrom)(0);
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
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
    parser.addOptions({service, clientId, clientSecret});
    parser.process(app);

    auto manager = BVTManager::initWithLaunchOptions({}, parser.value(clientId),
                                                     parser.value(clientSecret));
    std::unique_ptr<bvtsim::LoopbackRouter> router;
    if (parser.isSet(service)) {
        router = std::make_unique<bvtsim::LoopbackRouter>(QUrl(manager->origin()),
                                                          QUrl(parser.value(service)));
        bvt::setNetworkAccessManager(router.get());
    }
    run(manager);
    const int status = app.exec();
    bvt::setNetworkAccessManager(nullptr);
    return status;
}
