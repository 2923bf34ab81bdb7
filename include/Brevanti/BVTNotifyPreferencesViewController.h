#pragma once

/// \file
/// BVTNotifyPreferencesViewController, the ready-made preferences screen.

#include <Brevanti/brevanti_widgets_export.h>

#include <Brevanti/BVTNotifySwitch.h>
#include <Brevanti/platform/TableView.h>
#include <Brevanti/platform/ViewController.h>

#include <QVariantList>

#include <limits>
#include <memory>

class QAction;

/// The ready-made preferences screen: every category of the user's preference document as a
/// section, every preference as a row with an on/off switch that sends its change to the service at
/// once. It fetches the document each time it comes on screen and shows a spinner until a non-empty
/// document arrives. Each fetch appends its categories to those already shown.
class BREVANTI_WIDGETS_EXPORT BVTNotifyPreferencesViewController : public bvt::ViewController,
                                                                   public bvt::TableViewDataSource,
                                                                   public bvt::TableViewDelegate
{
    Q_OBJECT
public:
    /// The view tag (bvt::viewWithTag) of the spinner shown until the first non-empty document.
    static constexpr int spinnerTag = 12;
    /// The height of a category's header.
    static constexpr double headerHeight = 50;
    /// The height of a preference's row.
    static constexpr double rowHeight = 60;
    /// The smallest positive normal value rather than zero, so that no footer space shows.
    static constexpr double footerHeight = std::numeric_limits<double>::min();
    /// The reuse identifier of the rows' cells.
    static inline const QString cellIdentifier = QStringLiteral("SimpleCellIdentifier");

    /// For a host's navigation stack.
    explicit BVTNotifyPreferencesViewController(QObject *parent = nullptr);
    /// For a popup card: card sizes from the main screen and a "Done" button. The caller owns the
    /// result until it pushes it into a container.
    static BVTNotifyPreferencesViewController *initInPopup();
    /// Takes the view, and with it the table and its cells.
    ~BVTNotifyPreferencesViewController() override;

    /// The table of categories and preferences, made when the view loads.
    bvt::TableView *tableView() const;
    /// The "Done" button of initInPopup, which dismisses the card; null on a navigation stack.
    QAction *doneButton() const;
    QWidget *activityIndicatorView() const; ///< never set: the spinner is found by its tag
    QVariantList tableData() const;         ///< the categories shown, as decoded

    /// Appends the categories to those shown, reloads the table and refits it.
    void loadTableWithData(const QVariantList &data);
    /// Fits the table to the view, as after a turn of the screen.
    void relayoutTable();
    /// Sends the flipped switch's new state for its preference to the service.
    void switchChanged(BVTNotifySwitch *sender);
    /// Dismisses the popup card the screen is shown in, if any.
    void didClickDone();

    /// One section per category shown.
    int numberOfSectionsInTableView(bvt::TableView *tableView) override;
    /// One row per preference of the section's category.
    int numberOfRowsInSection(bvt::TableView *tableView, int section) override;
    /// A row: the preference's name and a BVTNotifySwitch in its state. A reused cell is handed
    /// back as it is, still showing the row it was made for.
    bvt::TableViewCell *cellForRowAtIndexPath(bvt::TableView *tableView,
                                              const bvt::IndexPath &indexPath) override;
    /// The category's name in grey on a near-white band, with a hairline along its lower edge.
    QWidget *viewForHeaderInSection(bvt::TableView *tableView, int section) override;
    /// headerHeight, for every section.
    double heightForHeaderInSection(bvt::TableView *tableView, int section) override;
    /// rowHeight, for every row.
    double heightForRowAtIndexPath(bvt::TableView *tableView,
                                   const bvt::IndexPath &indexPath) override;
    /// footerHeight, for every section.
    double heightForFooterInSection(bvt::TableView *tableView, int section) override;
    /// Takes the selection straight back: a row is not selectable, only its switch is.
    void didSelectRowAtIndexPath(bvt::TableView *tableView,
                                 const bvt::IndexPath &indexPath) override;

    /// Shows the card's navigation bar, which the permission card hides, when in a popup.
    void viewWillAppear(bool animated) override;
    /// Fetches the preference document; each one that is not empty replaces the spinner and is
    /// appended to what is shown.
    void viewDidAppear(bool animated) override;
    /// Refits the table (relayoutTable).
    void didRotateFromInterfaceOrientation(bvt::InterfaceOrientation from) override;

protected:
    void viewDidLoad() override;

private:
    class Private;
    const std::unique_ptr<Private> d;
};
