// Preference documents through the preferences screen on a 375 x 667 phone, offscreen: each JSON
// array is appended to the table, which is then painted and scrolled to its end and back. One
// screen serves every input; once it holds more than maxCategories categories it is replaced, so
// that the table's size (and the time per input) stays bounded.
#include <Brevanti/BVTNotifyPreferencesViewController.h>
#include <Brevanti/platform/NavigationController.h>
#include <Brevanti/platform/Screen.h>
#include <Brevanti/platform/Window.h>

#include <QApplication>
#include <QJsonDocument>

#include <cstdint>
#include <cstdio>

namespace {

constexpr qsizetype maxCategories = 200;

// The library's log lines, and the screen's note that no device is known, would drown the fuzzer's
// output; only a fatal message, which ends the run, is worth reading.
void dropMessages(QtMsgType type, const QMessageLogContext &, const QString &message)
{
    if (type == QtFatalMsg)
        std::fprintf(stderr, "%s\n", qUtf8Printable(message));
}

struct Phone
{
    bvt::Window window;
    bvt::NavigationController *navigation = nullptr;
    BVTNotifyPreferencesViewController *screen = nullptr;

    Phone()
    {
        screen = new BVTNotifyPreferencesViewController;
        navigation = new bvt::NavigationController(screen);
        window.setRootViewController(navigation);
        window.show();
    }

    void replaceScreen()
    {
        // The first controller cannot be popped: the new one goes on top, then the old one and its
        // view are deleted, which takes it off the stack.
        BVTNotifyPreferencesViewController *old = screen;
        screen = new BVTNotifyPreferencesViewController;
        navigation->pushViewController(screen, false);
        delete old->view();
        delete old;
    }
};

Phone *phone = nullptr;

} // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qInstallMessageHandler(dropMessages);
    // Qt keeps a reference to argc and reads argv for the whole run; the fuzzer's own arguments are
    // not Qt's.
    static int argc = 1;
    static char name[] = "fuzz_preference_document";
    static char *argv[] = {name, nullptr};
    // The application and the phone are never deleted: libFuzzer ends the process from its loop.
    new QApplication(argc, argv);
    bvt::Screen::mainScreen().setPhoneSize(QSize(375, 667));
    phone = new Phone;
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QJsonDocument document = QJsonDocument::fromJson(
            QByteArray(reinterpret_cast<const char *>(data), qsizetype(size)));
    if (!document.isArray())
        return 0;
    if (phone->screen->tableData().size() > maxCategories)
        phone->replaceScreen();

    BVTNotifyPreferencesViewController *screen = phone->screen;
    screen->loadTableWithData(document.toVariant().toList());
    bvt::TableView *table = screen->tableView();
    phone->window.widget()->grab();
    // The new categories are appended, so they are painted only at the table's end.
    table->setContentOffset(table->contentHeight());
    phone->window.widget()->grab();
    table->setContentOffset(0);
    return 0;
}
