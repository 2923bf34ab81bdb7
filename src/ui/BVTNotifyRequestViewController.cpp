#include <Brevanti/BVTNotify.h>
#include <Brevanti/BVTNotifyPreferencesViewController.h>
#include <Brevanti/BVTNotifyRequestViewController.h>
#include <Brevanti/platform/PopupController.h>
#include <Brevanti/platform/Screen.h>

#include "popupcard.h"
#include "requestcardview.h"
#include "ui_BVTNotifyRequestViewController.h"

#include <QCoreApplication>
#include <QTimer>

namespace {

const QColor noThanksColor = QColor::fromRgbF(0.75f, 0.75f, 0.75f, 1.0f);
constexpr int portraitHeight = 460;
constexpr int landscapeHeight = 340;
constexpr int customizeBorderWidth = 2;

// A nil colour is shown as no colour at all.
QString cssColor(const QColor &color)
{
    return color.isValid() ? color.name(QColor::HexArgb) : QStringLiteral("transparent");
}

} // namespace

RequestCardView::RequestCardView(BVTNotifyRequestViewController *controller)
    : m_controller(controller)
{ }

void RequestCardView::keepMeUpdatedButtonTapped()
{
    m_controller->keepMeUpdatedButtonTapped();
}

void RequestCardView::customizeButtonTapped()
{
    m_controller->customizeButtonTapped();
}

void RequestCardView::noThanksButtonTapped()
{
    m_controller->noThanksButtonTapped();
}

BVTNotifyRequestViewController::BVTNotifyRequestViewController()
    : BVTNotifyRequestViewController(
            BVTNotify::defaultNotificationColor(), BVTNotify::defaultNotificationIcon(),
            BVTNotify::defaultNotificationHeader(), BVTNotify::defaultNotificationSubHeader())
{ }

BVTNotifyRequestViewController::BVTNotifyRequestViewController(const QColor &color,
                                                               const QPixmap &icon,
                                                               const QString &header,
                                                               const QString &subHeader)
{
    // The preferences screen's title, and so its translation.
    setTitle(QCoreApplication::translate("PreferencesPage", "Notifications"));
    const QRect bounds = bvt::Screen::mainScreen().bounds();
    setContentSizeInPopup(QSize(bounds.width() - bvt::popupcard::screenMargin, portraitHeight));
    setLandscapeContentSizeInPopup(
            QSize(bounds.height() - bvt::popupcard::screenMargin, landscapeHeight));
    m_popupColor = color;
    m_popupIcon = icon;
    m_popupHeader = header;
    m_popupSubHeader = subHeader;
}

void BVTNotifyRequestViewController::loadView()
{
    auto *view = new RequestCardView(this);
    Ui::BVTNotifyRequestViewController form;
    form.setupUi(view);
    m_alertIcon = form.alertIcon;
    m_headerLabel = form.headerLabel;
    m_subheaderLabel = form.subheaderLabel;
    m_keepMeUpdatedButton = form.keepMeUpdatedButton;
    m_customizeButton = form.customizeButton;
    m_noThanksButton = form.noThanksButton;
    view->setAutoFillBackground(true);
    QPalette palette = view->palette();
    palette.setColor(QPalette::Window, Qt::white);
    view->setPalette(palette);
    setView(view);
}

void BVTNotifyRequestViewController::viewWillAppear(bool animated)
{
    // The card's colours and texts are applied on every appearance, also on coming back from the
    // preferences screen, whose bar is hidden again here.
    bvt::ViewController::viewDidAppear(animated);
    if (popupController())
        popupController()->setNavigationBarHidden(true, false);
    view(); // the outlets
    const QString color = cssColor(m_popupColor);
    m_alertIcon->setStyleSheet(
            QStringLiteral("background-color: %1; color: white; border-radius: 36px;").arg(color));
    m_headerLabel->setStyleSheet(QStringLiteral("color: %1;").arg(color));
    m_headerLabel->setText(m_popupHeader);
    m_subheaderLabel->setText(m_popupSubHeader);
    m_keepMeUpdatedButton->setText(
            QCoreApplication::translate("PermissionCard", "Keep Me Updated"));
    m_keepMeUpdatedButton->setStyleSheet(
            QStringLiteral("QPushButton { background-color: %1; color: white; border: none;"
                           " border-radius: 4px; font-weight: bold; }")
                    .arg(color));
    m_customizeButton->setText(
            QCoreApplication::translate("PermissionCard", "Customize Notifications"));
    m_customizeButton->setStyleSheet(
            QStringLiteral("QPushButton { color: %1; background: white; border: %2px solid %1;"
                           " border-radius: 4px; font-weight: bold; }")
                    .arg(color)
                    .arg(customizeBorderWidth));
    m_noThanksButton->setText(QCoreApplication::translate("PermissionCard", "No Thanks"));
    m_noThanksButton->setStyleSheet(
            QStringLiteral("QPushButton { color: %1; background: transparent; border: none; }")
                    .arg(noThanksColor.name()));
}

void BVTNotifyRequestViewController::keepMeUpdatedButtonTapped()
{
    if (popupController())
        popupController()->dismiss();
    // The card leaves first; the system's prompt comes after. The timer holds nothing of the card.
    QTimer::singleShot(permissionDelayMs, [] { BVTNotify::requestPushPermissions(); });
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
}

void BVTNotifyRequestViewController::didClickDone()
{
    noThanksButtonTapped();
}

QColor BVTNotifyRequestViewController::popupColor() const
{
    return m_popupColor;
}

void BVTNotifyRequestViewController::setPopupColor(const QColor &color)
{
    m_popupColor = color;
}

QPixmap BVTNotifyRequestViewController::popupIcon() const
{
    return m_popupIcon;
}

void BVTNotifyRequestViewController::setPopupIcon(const QPixmap &icon)
{
    m_popupIcon = icon;
}

QString BVTNotifyRequestViewController::popupHeader() const
{
    return m_popupHeader;
}

void BVTNotifyRequestViewController::setPopupHeader(const QString &header)
{
    m_popupHeader = header;
}

QString BVTNotifyRequestViewController::popupSubHeader() const
{
    return m_popupSubHeader;
}

void BVTNotifyRequestViewController::setPopupSubHeader(const QString &subHeader)
{
    m_popupSubHeader = subHeader;
}

QLabel *BVTNotifyRequestViewController::alertIcon() const
{
    return m_alertIcon;
}

QLabel *BVTNotifyRequestViewController::headerLabel() const
{
    return m_headerLabel;
}

QLabel *BVTNotifyRequestViewController::subheaderLabel() const
{
    return m_subheaderLabel;
}

QPushButton *BVTNotifyRequestViewController::keepMeUpdatedButton() const
{
    return m_keepMeUpdatedButton;
}

QPushButton *BVTNotifyRequestViewController::customizeButton() const
{
    return m_customizeButton;
}

QPushButton *BVTNotifyRequestViewController::noThanksButton() const
{
    return m_noThanksButton;
}
