// The preferences screen with a large document (100 categories of 20 preferences) on a 375 x 667
// phone, offscreen: the time to load the document and paint the first screen, the cell widgets
// that takes, and the cell widgets created while scrolling from top to bottom.
#include <Brevanti/BVTNotifyPreferencesViewController.h>
#include <Brevanti/platform/NavigationController.h>
#include <Brevanti/platform/Screen.h>
#include <Brevanti/platform/Window.h>

#include <QApplication>
#include <QElapsedTimer>

#include <cstdio>

namespace {

QVariantList largeDocument(int categories, int preferences)
{
    QVariantList document;
    for (int c = 0; c < categories; ++c) {
        QVariantList rows;
        for (int p = 0; p < preferences; ++p)
            rows.append(QVariantMap{{"name", QStringLiteral("Preference %1.%2").arg(c).arg(p)},
                                    {"key", QStringLiteral("p%1").arg(p)},
                                    {"enabled", p % 2}});
        document.append(QVariantMap{{"name", QStringLiteral("Category %1").arg(c)},
                                    {"key", QStringLiteral("c%1").arg(c)},
                                    {"preferences", rows}});
    }
    return document;
}

void quiet(QtMsgType, const QMessageLogContext &, const QString &) { }

} // namespace

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    qInstallMessageHandler(quiet); // the screen's fetch has no service here and says so
    bvt::Screen::mainScreen().setPhoneSize(QSize(375, 667));

    bvt::Window window;
    auto *screen = new BVTNotifyPreferencesViewController;
    window.setRootViewController(new bvt::NavigationController(screen));
    window.show();
    const QVariantList document = largeDocument(100, 20);

    QElapsedTimer timer;
    timer.start();
    screen->loadTableWithData(document);
    window.widget()->grab(); // the first paint
    const double loadMs = timer.nsecsElapsed() / 1e6;

    bvt::TableView *table = screen->tableView();
    const int visible = int(table->indexPathsForVisibleRows().size());
    const int createdFirst = table->cellsCreated();
    const int step = table->viewport()->height() / 3;
    for (double y = 0; y < table->contentHeight(); y += step) {
        table->setContentOffset(y);
        QCoreApplication::processEvents();
    }
    const int createdScrolling = table->cellsCreated() - createdFirst;

    std::printf("%-60s %21.1f %15s\n", "load and first paint, 2000 rows (ms)", loadMs, "");
    std::printf("%-60s %21d %15s\n", "rows visible on the first screen", visible, "");
    std::printf("%-60s %21d %15s\n", "cell widgets created for the first screen", createdFirst,
                "<= visible+2");
    std::printf("%-60s %21d %15s\n", "cell widgets created scrolling top to bottom",
                createdScrolling, "<= pool (2)");
    return 0;
}
