// The preferences screen: its making, its lifecycle, its layout, and the table it is the data
// source and delegate of: sections from the document's categories, rows from their preferences,
// and what a flipped switch sends.
#include <Brevanti/BVTNotify.h>
#include <Brevanti/BVTNotifyPreferencesViewController.h>
#include <Brevanti/BVTNotifyRequestViewController.h>
#include <Brevanti/Client.h>
#include <Brevanti/platform/ActivityIndicatorView.h>
#include <Brevanti/platform/PopupController.h>
#include <Brevanti/platform/Screen.h>
#include <Brevanti/platform/ViewTag.h>

#include "core/log.h"
#include "core/logging.h"
#include "notify/preferencedocument.h"
#include "notify/preferenceswitch.h"
#include "platform/hairline.h"
#include "popupcard.h"
#include "preferencesstyle.h"
#include "screencolors.h"

#include <QAction>
#include <QCoreApplication>
#include <QLabel>
#include <QPointer>

class BVTNotifyPreferencesViewController::Private
{
public:
    bvt::TableView *tableView = nullptr;
    QAction *doneButton = nullptr;
    bvt::PreferenceDocument document;
    bvt::ScreenColors colors; // as the screen was built
};

BVTNotifyPreferencesViewController::BVTNotifyPreferencesViewController(QObject *parent)
    : bvt::ViewController(parent), d(std::make_unique<Private>())
{
    // The context of the QML page, so that both screens share one translation.
    setTitle(QCoreApplication::translate("PreferencesPage", "Notifications"));
}

BVTNotifyPreferencesViewController::~BVTNotifyPreferencesViewController() = default;

BVTNotifyPreferencesViewController *BVTNotifyPreferencesViewController::initInPopup()
{
    auto *screen = new BVTNotifyPreferencesViewController;
    const QRect bounds = bvt::Screen::mainScreen().bounds();
    screen->setContentSizeInPopup(QSize(bounds.width() - bvt::popupcard::screenMargin,
                                        bvt::preferences::popupPortraitHeight));
    screen->setLandscapeContentSizeInPopup(
            QSize(bounds.height() - bvt::popupcard::screenMargin,
                  bounds.width() - bvt::preferences::popupLandscapeMargin));
    screen->d->doneButton =
            new QAction(QCoreApplication::translate("PreferencesPage", "Done"), screen);
    connect(screen->d->doneButton, &QAction::triggered, screen,
            [screen] { screen->didClickDone(); });
    screen->navigationItem().rightBarButtonItem = screen->d->doneButton;
    return screen;
}

bvt::TableView *BVTNotifyPreferencesViewController::tableView() const
{
    return d->tableView;
}

QAction *BVTNotifyPreferencesViewController::doneButton() const
{
    return d->doneButton;
}

QWidget *BVTNotifyPreferencesViewController::activityIndicatorView() const
{
    return nullptr;
}

QVariantList BVTNotifyPreferencesViewController::tableData() const
{
    return d->document.decoded();
}

void BVTNotifyPreferencesViewController::viewDidLoad()
{
    bvt::ViewController::viewDidLoad();
    d->document.clear();
    d->colors = bvt::ScreenColors::current();
    d->tableView = new bvt::TableView(bvt::TableView::Style::Grouped, view());
    if (d->colors.followsPalette()) {
        bvt::preferences::setBackgroundColor(view(), d->colors.background);
        d->tableView->setBackgroundColor(d->colors.background);
        d->tableView->setSeparatorColor(d->colors.hairline);
    }
    d->tableView->setGeometry(0, 0, view()->width(), view()->height());
    d->tableView->setDelegate(this);
    d->tableView->setDataSource(this);
    d->tableView->setSeparatorInset(bvt::preferences::margins);
    d->tableView->setLayoutMargins(bvt::preferences::margins);

    auto *spinner = new bvt::ActivityIndicatorView(view());
    spinner->setCenter(QPoint(view()->width() / 2, bvt::preferences::spinnerCentreY));
    bvt::setViewTag(spinner, spinnerTag);
    spinner->show();
    spinner->raise();
    spinner->startAnimating();
}

void BVTNotifyPreferencesViewController::viewWillAppear(bool animated)
{
    bvt::ViewController::viewWillAppear(animated);
    if (popupController())
        popupController()->setNavigationBarHidden(false, animated);
}

void BVTNotifyPreferencesViewController::viewDidAppear(bool)
{
    // Fetched on every appearance; each document is appended to what is shown.
    QPointer<BVTNotifyPreferencesViewController> screen(this);
    BVTNotify::getPreferences(
            [screen](const QVariant &document) {
                const QVariantList categories = document.toList();
                if (!screen || categories.isEmpty())
                    return; // an empty document leaves the spinner turning
                delete bvt::viewWithTag(screen->view(), spinnerTag);
                screen->loadTableWithData(categories);
            },
            [](const QString &error) { bvt::log("Preferences Error... ERROR: %@", error); });
}

void BVTNotifyPreferencesViewController::relayoutTable()
{
    d->tableView->setGeometry(0, 0, view()->width(), view()->height());
}

void BVTNotifyPreferencesViewController::didRotateFromInterfaceOrientation(
        bvt::InterfaceOrientation)
{
    relayoutTable();
}

void BVTNotifyPreferencesViewController::didClickDone()
{
    bvt::PopupController *popup = popupController();
    if (!popup)
        return;
    // Customized, when the card is what the preferences were shown in.
    const bool inCard =
            qobject_cast<BVTNotifyRequestViewController *>(popup->viewControllers().value(0));
    popup->dismiss();
    if (inCard)
        Q_EMIT bvt::Client::instance()->cardFinished(bvt::Client::CardCustomized);
}

void BVTNotifyPreferencesViewController::loadTableWithData(const QVariantList &data)
{
    d->document.append(data);
    d->tableView->reloadData();
    relayoutTable();
}

int BVTNotifyPreferencesViewController::numberOfSectionsInTableView(bvt::TableView *)
{
    return int(d->document.categories().size());
}

int BVTNotifyPreferencesViewController::numberOfRowsInSection(bvt::TableView *, int section)
{
    return int(d->document.categories().value(section).preferences.size());
}

bvt::TableViewCell *
BVTNotifyPreferencesViewController::cellForRowAtIndexPath(bvt::TableView *tableView,
                                                          const bvt::IndexPath &indexPath)
{
    // A reused cell is handed back as it is, still showing the row it was built for.
    if (bvt::TableViewCell *reused = tableView->dequeueReusableCellWithIdentifier(cellIdentifier))
        return reused;

    const bvt::PreferenceCategory category = d->document.categories().value(indexPath.section);
    const bvt::Preference preference = category.preferences.value(indexPath.row);

    auto *cell = new bvt::TableViewCell(bvt::TableViewCell::Style::Subtitle, cellIdentifier);
    cell->setSelectionStyle(bvt::TableViewCell::SelectionStyle::None);
    cell->setLayoutMargins(bvt::preferences::margins);
    cell->setBackgroundColor(d->colors.rowBackground);

    auto *label = new QLabel(cell->contentView());
    label->setGeometry(bvt::preferences::cellLabelFrame);
    label->setFont(bvt::preferences::boldFont());
    label->setText(preference.name);
    label->setAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    bvt::preferences::setTextColor(label, d->colors.rowText);

    auto *toggle = new BVTNotifySwitch;
    toggle->setCategory(category.key);
    toggle->setPreference(preference.key);
    toggle->setOnTintColor(bvt::preferences::switchOnTint);
    toggle->setAccessibleName(label->text());
    cell->setAccessoryView(toggle);
    toggle->setOn(preference.enabled, false);
    connect(toggle, &BVTNotifySwitch::valueChanged, this,
            [this, toggle] { switchChanged(toggle); });
    return cell;
}

QWidget *BVTNotifyPreferencesViewController::viewForHeaderInSection(bvt::TableView *tableView,
                                                                    int section)
{
    const int width = tableView->width();
    auto *header = new QWidget;
    header->setGeometry(0, 0, width, int(headerHeight));
    bvt::preferences::setBackgroundColor(header, d->colors.headerBackground);

    auto *label = new QLabel(header);
    label->setGeometry(bvt::preferences::headerLabelLeft, bvt::preferences::headerLabelTop, width,
                       bvt::preferences::headerLabelHeight);
    label->setFont(bvt::preferences::boldFont());
    bvt::preferences::setTextColor(label, d->colors.headerText);
    label->setText(d->document.categories().value(section).name);

    // Along the header's lower edge, just outside it, over the top of the section's first row.
    new bvt::Hairline(header, d->colors.hairline, bvt::preferences::hairlineThickness,
                      bvt::Hairline::Placement::Outside);
    return header;
}

double BVTNotifyPreferencesViewController::heightForHeaderInSection(bvt::TableView *, int)
{
    return headerHeight;
}

double BVTNotifyPreferencesViewController::heightForRowAtIndexPath(bvt::TableView *,
                                                                   const bvt::IndexPath &)
{
    return rowHeight;
}

double BVTNotifyPreferencesViewController::heightForFooterInSection(bvt::TableView *, int)
{
    return footerHeight;
}

void BVTNotifyPreferencesViewController::didSelectRowAtIndexPath(bvt::TableView *tableView,
                                                                 const bvt::IndexPath &indexPath)
{
    tableView->deselectRowAtIndexPath(indexPath, false);
}

void BVTNotifyPreferencesViewController::switchChanged(BVTNotifySwitch *sender)
{
    bvt::sendPreferenceSwitch(sender->category(), sender->preference(), sender->isOn(),
                              bvt::lcUi());
}
