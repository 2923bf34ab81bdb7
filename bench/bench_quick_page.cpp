// The QML preferences page with a large document (100 categories of 20 preferences) in a 375 x 667
// window, offscreen on the software renderer, fetched from the local service on loopback: the time
// from making the page to its first frame with the rows, and the delegates the list view makes,
// which must stay within what is visible plus its cache, on the first screen and after scrolling
// from top to bottom.
#include "service.h"
#include <Brevanti/ServiceRouter.h>

#include <Brevanti/BVT.h>

#include <QAbstractItemModel>
#include <QDeadlineTimer>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QJsonArray>
#include <QJsonObject>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickWindow>
#include <QSettings>
#include <QStandardPaths>
#include <QtQml/qqmlextensionplugin.h>

#include <cstdio>
#include <functional>

Q_IMPORT_QML_PLUGIN(BrevantiPlugin)

namespace {

QJsonArray largeDocument(int categories, int preferences)
{
    QJsonArray document;
    for (int c = 0; c < categories; ++c) {
        QJsonArray rows;
        for (int p = 0; p < preferences; ++p)
            rows.append(QJsonObject{{"name", QStringLiteral("Preference %1.%2").arg(c).arg(p)},
                                    {"key", QStringLiteral("p%1").arg(p)},
                                    {"enabled", p % 2 == 1}});
        document.append(QJsonObject{{"name", QStringLiteral("Category %1").arg(c)},
                                    {"key", QStringLiteral("c%1").arg(c)},
                                    {"preferences", rows}});
    }
    return document;
}

bool waitFor(const std::function<bool()> &ready)
{
    const QDeadlineTimer deadline(10'000);
    while (!ready() && !deadline.hasExpired())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 10);
    return ready();
}

int delegatesIn(QQuickItem *list)
{
    int switches = 0;
    QList<QQuickItem *> below{list};
    while (!below.isEmpty()) {
        QQuickItem *item = below.takeFirst();
        switches += item->inherits("QQuickSwitch"); // pooled ones too: made and still there
        below << item->childItems();
    }
    return switches;
}

void quiet(QtMsgType, const QMessageLogContext &, const QString &) { }

int fail(const char *what)
{
    std::fprintf(stderr, "bench_quick_page: %s\n", what);
    return 1;
}

} // namespace

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("QT_QUICK_BACKEND", "software");
    QGuiApplication app(argc, argv);
    QCoreApplication::setOrganizationName(QStringLiteral("BrevantiBench"));
    QStandardPaths::setTestModeEnabled(true);
    QSettings().clear(); // a first run: a device of an earlier run is unknown to this service
    qInstallMessageHandler(quiet);

    bvtsim::Service service;
    service.addClient(QStringLiteral("bench"), QStringLiteral("bench"));
    const int rows = 2000;
    if (!service.listen() || !service.setCatalogue(largeDocument(100, rows / 100)))
        return fail("the local service did not start");
    bvt::ServiceRouter router(service.baseUrl());
    bvt::setNetworkAccessManager(&router);
    BVT::initWithLaunchOptions({}, QStringLiteral("bench"), QStringLiteral("bench"));
    if (!waitFor([] { return !BVT::currentDevice().isNull(); }))
        return fail("no device registered");

    QQuickWindow window;
    window.resize(375, 667);
    window.show();
    QQmlEngine engine;
    QQmlComponent component(&engine);
    component.setData("import Brevanti\nPreferencesPage {}", QUrl());

    QElapsedTimer timer;
    timer.start();
    std::unique_ptr<QObject> made(component.createWithInitialProperties(
            {{QStringLiteral("parent"), QVariant::fromValue(window.contentItem())}}));
    auto *page = qobject_cast<QQuickItem *>(made.get());
    if (!page)
        return fail(qPrintable(component.errorString()));
    page->setSize(window.size());
    QAbstractItemModel *model = page->property("model").value<QAbstractItemModel *>();
    if (!waitFor([model, rows] { return model->rowCount() == rows; }))
        return fail("the document did not arrive");
    window.grabWindow(); // the first frame with the rows
    const double loadMs = timer.nsecsElapsed() / 1e6;

    QQuickItem *list = nullptr;
    for (QQuickItem *child : page->childItems()) {
        if (child->inherits("QQuickListView"))
            list = child;
    }
    if (!list)
        return fail("no list view in the page");
    const int cache = list->property("cacheBuffer").toInt();
    const int bound = (int(list->height()) + 2 * cache) / 60 + 2;
    const int first = delegatesIn(list);
    // The view's content height is an estimate until it has seen the rows: the end is asked anew.
    const qreal step = list->height() / 3;
    for (int steps = 0; !list->property("atYEnd").toBool() && steps < 10'000; ++steps) {
        const qreal end = list->property("originY").toReal()
                + list->property("contentHeight").toReal() - list->height();
        list->setProperty("contentY", qMin(list->property("contentY").toReal() + step, end));
        window.grabWindow();
    }
    const int scrolled = delegatesIn(list);

    const QString limit = QStringLiteral("<= %1").arg(bound);
    std::printf("%-60s %21.1f %15s\n", "QML page: fetch to first frame, 2000 rows (ms)", loadMs,
                "");
    std::printf("%-60s %21d %15s\n", "QML page: row delegates on the first screen", first,
                qPrintable(limit));
    std::printf("%-60s %21d %15s\n", "QML page: row delegates after scrolling to the end", scrolled,
                qPrintable(limit));
    bvt::setNetworkAccessManager(nullptr);
    return first <= bound && scrolled <= bound ? 0 : 1;
}
