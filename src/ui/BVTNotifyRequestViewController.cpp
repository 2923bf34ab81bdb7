#include <Brevanti/BVTNotify.h>
#include <Brevanti/BVTNotifyPreferencesViewController.h>
#include <Brevanti/BVTNotifyRequestViewController.h>
#include <Brevanti/Client.h>
#include <Brevanti/platform/PopupController.h>
#include <Brevanti/platform/Screen.h>

#include "popupcard.h"
#include "screencolors.h"
#include "ui_BVTNotifyRequestViewController.h"

#include <QCoreApplication>
#include <QTimer>

namespace {

constexpr int portraitHeight = 460;
constexpr int landscapeHeight = 340;
constexpr int customizeBorderWidth = 2;

// A nil colour is shown as no colour at all.
QString cssColor(const QColor &color)
{
    return color.isValid() ? color.name(QColor::HexArgb) : QStringLiteral("transparent");
}

} // namespace

class BVTNotifyRequestViewController::Private
{
public:
    QColor popupColor;
    QPixmap popupIcon;
    QString popupHeader;
    QString popupSubHeader;
    QLabel *alertIcon = nullptr;
    QLabel *headerLabel = nullptr;
    QLabel *subheaderLabel = nullptr;
    QPushButton *keepMeUpdatedButton = nullptr;
    QPushButton *customizeButton = nullptr;
    QPushButton *noThanksButton = nullptr;
};

BVTNotifyRequestViewController::BVTNotifyRequestViewController()
    : BVTNotifyRequestViewController(
            BVTNotify::defaultNotificationColor(), BVTNotify::defaultNotificationIcon(),
            BVTNotify::defaultNotificationHeader(), BVTNotify::defaultNotificationSubHeader())
{ }

BVTNotifyRequestViewController::BVTNotifyRequestViewController(const QColor &color,
                                                               const QPixmap &icon,
                                                               const QString &header,
                                                               const QString &subHeader)
    : d(std::make_unique<Private>())
{
    // The preferences screen's title, and so its translation.
    setTitle(QCoreApplication::translate("PreferencesPage", "Notifications"));
    const QRect bounds = bvt::Screen::mainScreen().bounds();
    setContentSizeInPopup(QSize(bounds.width() - bvt::popupcard::screenMargin, portraitHeight));
    setLandscapeContentSizeInPopup(
            QSize(bounds.height() - bvt::popupcard::screenMargin, landscapeHeight));
    d->popupColor = color;
    d->popupIcon = icon;
    d->popupHeader = header;
    d->popupSubHeader = subHeader;
}

BVTNotifyRequestViewController::~BVTNotifyRequestViewController() = default;

void BVTNotifyRequestViewController::loadView()
{
    auto *view = new QWidget;
    Ui::BVTNotifyRequestViewController form;
    form.setupUi(view);
    // The form describes the card; the buttons are connected here, as the form can reach only the
    // widgets it builds and the handlers are this controller's.
    connect(form.keepMeUpdatedButton, &QPushButton::clicked, this,
            &BVTNotifyRequestViewController::keepMeUpdatedButtonTapped);
    connect(form.customizeButton, &QPushButton::clicked, this,
            &BVTNotifyRequestViewController::customizeButtonTapped);
    connect(form.noThanksButton, &QPushButton::clicked, this,
            &BVTNotifyRequestViewController::noThanksButtonTapped);
    d->alertIcon = form.alertIcon;
    d->headerLabel = form.headerLabel;
    d->subheaderLabel = form.subheaderLabel;
    d->keepMeUpdatedButton = form.keepMeUpdatedButton;
    d->customizeButton = form.customizeButton;
    d->noThanksButton = form.noThanksButton;
    view->setAutoFillBackground(true);
    setView(view);
}

void BVTNotifyRequestViewController::viewWillAppear(bool animated)
{
    // The card's colours and texts are applied on every appearance, also on coming back from the
    // preferences screen, whose bar is hidden again here.
    bvt::ViewController::viewDidAppear(animated);
    if (popupController())
        popupController()->setNavigationBarHidden(true, false);
    // Their own colours, or the host's palette when it asked for it; read again on each appearance.
    const bvt::ScreenColors colors = bvt::ScreenColors::current();
    QPalette palette = view()->palette(); // and the outlets
    palette.setColor(QPalette::Window, colors.background);
    view()->setPalette(palette);
    const QString color = cssColor(d->popupColor);
    const QString onTint = cssColor(colors.onTint(d->popupColor));
    const QString tintAsText = cssColor(colors.tintAsText(d->popupColor));
    d->alertIcon->setStyleSheet(
            QStringLiteral("background-color: %1; color: %2; border-radius: 36px;")
                    .arg(color, onTint));
    d->headerLabel->setStyleSheet(QStringLiteral("color: %1;").arg(tintAsText));
    d->headerLabel->setText(d->popupHeader);
    d->subheaderLabel->setStyleSheet(QStringLiteral("color: %1;").arg(cssColor(colors.text)));
    d->subheaderLabel->setText(d->popupSubHeader);
    d->keepMeUpdatedButton->setText(
            QCoreApplication::translate("PermissionCard", "Keep Me Updated"));
    d->keepMeUpdatedButton->setStyleSheet(
            QStringLiteral("QPushButton { background-color: %1; color: %2; border: none;"
                           " border-radius: 4px; font-weight: bold; }")
                    .arg(color, onTint));
    d->customizeButton->setText(
            QCoreApplication::translate("PermissionCard", "Customize Notifications"));
    d->customizeButton->setStyleSheet(
            QStringLiteral("QPushButton { color: %1; background: %2; border: %3px solid %4;"
                           " border-radius: 4px; font-weight: bold; }")
                    .arg(tintAsText, cssColor(colors.background))
                    .arg(customizeBorderWidth)
                    .arg(color));
    d->noThanksButton->setText(QCoreApplication::translate("PermissionCard", "No Thanks"));
    d->noThanksButton->setStyleSheet(
            QStringLiteral("QPushButton { color: %1; background: transparent; border: none; }")
                    .arg(cssColor(colors.secondaryText)));
}

void BVTNotifyRequestViewController::keepMeUpdatedButtonTapped()
{
    if (popupController())
        popupController()->dismiss();
    // The card leaves first; the system's prompt comes after. The timer holds nothing of the card.
    QTimer::singleShot(permissionDelayMs, [] { BVTNotify::requestPushPermissions(); });
    Q_EMIT bvt::Client::instance()->cardFinished(bvt::Client::CardKeptUpdated);
}

void BVTNotifyRequestViewController::customizeButtonTapped()
{
    if (popupController())
        popupController()->pushViewController(BVTNotifyPreferencesViewController::initInPopup(),
                                              true);
}

void BVTNotifyRequestViewController::noThanksButtonTapped()
{
    if (popupController())
        popupController()->dismiss();
    Q_EMIT bvt::Client::instance()->cardFinished(bvt::Client::CardDeclined);
}

void BVTNotifyRequestViewController::didClickDone()
{
    noThanksButtonTapped();
}

QColor BVTNotifyRequestViewController::popupColor() const
{
    return d->popupColor;
}

void BVTNotifyRequestViewController::setPopupColor(const QColor &color)
{
    d->popupColor = color;
}

QPixmap BVTNotifyRequestViewController::popupIcon() const
{
    return d->popupIcon;
}

void BVTNotifyRequestViewController::setPopupIcon(const QPixmap &icon)
{
    d->popupIcon = icon;
}

QString BVTNotifyRequestViewController::popupHeader() const
{
    return d->popupHeader;
}

void BVTNotifyRequestViewController::setPopupHeader(const QString &header)
{
    d->popupHeader = header;
}

QString BVTNotifyRequestViewController::popupSubHeader() const
{
    return d->popupSubHeader;
}

void BVTNotifyRequestViewController::setPopupSubHeader(const QString &subHeader)
{
    d->popupSubHeader = subHeader;
}

QLabel *BVTNotifyRequestViewController::alertIcon() const
{
    return d->alertIcon;
}

QLabel *BVTNotifyRequestViewController::headerLabel() const
{
    return d->headerLabel;
}

QLabel *BVTNotifyRequestViewController::subheaderLabel() const
{
    return d->subheaderLabel;
}

QPushButton *BVTNotifyRequestViewController::keepMeUpdatedButton() const
{
    return d->keepMeUpdatedButton;
}

QPushButton *BVTNotifyRequestViewController::customizeButton() const
{
    return d->customizeButton;
}

QPushButton *BVTNotifyRequestViewController::noThanksButton() const
{
    return d->noThanksButton;
}
