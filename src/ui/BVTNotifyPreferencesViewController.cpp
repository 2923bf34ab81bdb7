// The preferences screen: its making, its lifecycle and its layout.
#include <Brevanti/BVTNotify.h>
#include <Brevanti/BVTNotifyPreferencesViewController.h>
#include <Brevanti/platform/ActivityIndicatorView.h>
#include <Brevanti/platform/PopupController.h>
#include <Brevanti/platform/Screen.h>
#include <Brevanti/platform/ViewTag.h>

#include "core/log.h"
#include "popupcard.h"
#include "preferencesstyle.h"

#include <QAction>
#include <QPointer>

BVTNotifyPreferencesViewController::BVTNotifyPreferencesViewController(QObject *parent)
    : bvt::ViewController(parent)
{
    setTitle(QStringLiteral("Notifications"));
}

BVTNotifyPreferencesViewController *BVTNotifyPreferencesViewController::initInPopup()
{
    auto *screen = new BVTNotifyPreferencesViewController;
    const QRect bounds = bvt::Screen::mainScreen().bounds();
    screen->setContentSizeInPopup(QSize(bounds.width() - bvt::popupcard::screenMargin,
                                        bvt::preferences::popupPortraitHeight));
    screen->setLandscapeContentSizeInPopup(
            QSize(bounds.height() - bvt::popupcard::screenMargin,
                  bounds.width() - bvt::preferences::popupLandscapeMargin));
    screen->m_doneButton = new QAction(QStringLiteral("Done"), screen);
    connect(screen->m_doneButton, &QAction::triggered, screen,
            [screen] { screen->didClickDone(); });
    screen->navigationItem().rightBarButtonItem = screen->m_doneButton;
    return screen;
}

bvt::TableView *BVTNotifyPreferencesViewController::tableView() const
{
    return m_tableView;
}

QAction *BVTNotifyPreferencesViewController::doneButton() const
{
    return m_doneButton;
}

QWidget *BVTNotifyPreferencesViewController::activityIndicatorView() const
{
    return nullptr;
}

QVariantList BVTNotifyPreferencesViewController::tableData() const
{
    return m_tableData;
}

void BVTNotifyPreferencesViewController::viewDidLoad()
{
    bvt::ViewController::viewDidLoad();
    m_tableData.clear();
    m_tableView = new bvt::TableView(bvt::TableView::Style::Grouped, view());
    m_tableView->setGeometry(0, 0, view()->width(), view()->height());
    m_tableView->setDelegate(this);
    m_tableView->setDataSource(this);
    m_tableView->setSeparatorInset(bvt::preferences::margins);
    m_tableView->setLayoutMargins(bvt::preferences::margins);

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
    m_tableView->setGeometry(0, 0, view()->width(), view()->height());
}

void BVTNotifyPreferencesViewController::didRotateFromInterfaceOrientation(
        bvt::InterfaceOrientation)
{
    relayoutTable();
}

void BVTNotifyPreferencesViewController::didClickDone()
{
    if (popupController())
        popupController()->dismiss();
}
