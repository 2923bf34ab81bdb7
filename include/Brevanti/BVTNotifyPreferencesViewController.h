#pragma once

#include <Brevanti/brevanti_widgets_export.h>

#include <Brevanti/BVTNotifySwitch.h>
#include <Brevanti/platform/TableView.h>
#include <Brevanti/platform/ViewController.h>

#include <QVariantList>

#include <limits>
#include <memory>

class QAction;

// The ready-made preferences screen: every category of the user's preference document as a
// section, every preference as a row with an on/off switch that sends its change to the service at
// once. It fetches the document each time it comes on screen and shows a spinner until a non-empty
// document arrives. Each fetch appends its categories to those already shown.
class BREVANTI_WIDGETS_EXPORT BVTNotifyPreferencesViewController : public bvt::ViewController,
                                                                   public bvt::TableViewDataSource,
                                                                   public bvt::TableViewDelegate
{
    Q_OBJECT
public:
    static constexpr int spinnerTag = 12;
    static constexpr double headerHeight = 50;
    static constexpr double rowHeight = 60;
    // The smallest positive normal value rather than zero, so that no footer space shows.
    static constexpr double footerHeight = std::numeric_limits<double>::min();
    static inline const QString cellIdentifier = QStringLiteral("SimpleCellIdentifier");

    // For a host's navigation stack.
    explicit BVTNotifyPreferencesViewController(QObject *parent = nullptr);
    // For a popup card: card sizes from the main screen and a "Done" button. The caller owns the
    // result until it pushes it into a container.
    static BVTNotifyPreferencesViewController *initInPopup();
    ~BVTNotifyPreferencesViewController() override;

    bvt::TableView *tableView() const;
    QAction *doneButton() const;
    QWidget *activityIndicatorView() const; // never set: the spinner is found by its tag
    QVariantList tableData() const;         // the categories shown, as decoded

    // Appends the categories to those shown, reloads the table and refits it.
    void loadTableWithData(const QVariantList &data);
    void relayoutTable();
    void switchChanged(BVTNotifySwitch *sender);
    void didClickDone();

    int numberOfSectionsInTableView(bvt::TableView *tableView) override;
    int numberOfRowsInSection(bvt::TableView *tableView, int section) override;
    bvt::TableViewCell *cellForRowAtIndexPath(bvt::TableView *tableView,
                                              const bvt::IndexPath &indexPath) override;
    QWidget *viewForHeaderInSection(bvt::TableView *tableView, int section) override;
    double heightForHeaderInSection(bvt::TableView *tableView, int section) override;
    double heightForRowAtIndexPath(bvt::TableView *tableView,
                                   const bvt::IndexPath &indexPath) override;
    double heightForFooterInSection(bvt::TableView *tableView, int section) override;
    void didSelectRowAtIndexPath(bvt::TableView *tableView,
                                 const bvt::IndexPath &indexPath) override;

    void viewWillAppear(bool animated) override;
    void viewDidAppear(bool animated) override;
    void didRotateFromInterfaceOrientation(bvt::InterfaceOrientation from) override;

protected:
    void viewDidLoad() override;

private:
    class Private;
    const std::unique_ptr<Private> d;
};
