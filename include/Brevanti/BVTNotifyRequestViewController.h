#pragma once

/// \file
/// BVTNotifyRequestViewController, the permission card.

#include <Brevanti/brevanti_widgets_export.h>

#include <Brevanti/platform/ViewController.h>

#include <QColor>
#include <QPixmap>
#include <QString>

#include <memory>

class QLabel;
class QPushButton;

/// The card that asks the user to keep up to date, before the system's own permission prompt:
/// "Keep Me Updated" asks for push permission, "Customize Notifications" opens the preferences
/// screen in the same card, "No Thanks" closes it. Its controls come from the interface file
/// "BVTNotifyRequestViewController" (resources/); the code gives them colours and texts each time
/// the card is about to appear. Shown by BVTNotify::requestCustomPreferences.
class BREVANTI_WIDGETS_EXPORT BVTNotifyRequestViewController : public bvt::ViewController
{
    Q_OBJECT
public:
    BVTNotifyRequestViewController(); ///< the four defaults of BVTNotify
    /// A card in the colour, with the texts, as given (also when nil); sized from the main screen.
    BVTNotifyRequestViewController(const QColor &color, const QPixmap &icon, const QString &header,
                                   const QString &subHeader);
    ~BVTNotifyRequestViewController() override;

    /// The colour of the "!" mark, the header and the buttons; an invalid colour shows none.
    ///@{
    QColor popupColor() const;
    void setPopupColor(const QColor &color);
    ///@}
    QPixmap popupIcon() const; ///< kept, deliberately not shown: the icon view keeps its own image
    /// Keeps the icon (see popupIcon).
    void setPopupIcon(const QPixmap &icon);
    /// The card's header text.
    ///@{
    QString popupHeader() const;
    void setPopupHeader(const QString &header);
    ///@}
    /// The card's sub-header text, under the header.
    ///@{
    QString popupSubHeader() const;
    void setPopupSubHeader(const QString &subHeader);
    ///@}

    /// \name Outlets
    /// The outlets, set when the view loads.
    ///@{

    /// The round "!" mark in the card's colour.
    QLabel *alertIcon() const;
    /// The header text, in the card's colour.
    QLabel *headerLabel() const;
    /// The sub-header text.
    QLabel *subheaderLabel() const;
    /// "Keep Me Updated", filled with the card's colour.
    QPushButton *keepMeUpdatedButton() const;
    /// "Customize Notifications", outlined in the card's colour.
    QPushButton *customizeButton() const;
    /// "No Thanks", in grey.
    QPushButton *noThanksButton() const;
    ///@}

    /// Gives the controls their colours and texts, and hides the card's navigation bar (which the
    /// preferences screen shows).
    void viewWillAppear(bool animated) override;

public Q_SLOTS:
    /// Dismisses the card, then asks for push permission after permissionDelayMs.
    void keepMeUpdatedButtonTapped();
    /// Pushes the preferences screen (BVTNotifyPreferencesViewController::initInPopup) onto the
    /// card.
    void customizeButtonTapped();
    /// Dismisses the card.
    void noThanksButtonTapped();

public:
    /// Dismisses the card, as "No Thanks" does.
    void didClickDone();

    static constexpr int permissionDelayMs = 100; ///< lets the card leave before the system prompt

protected:
    void loadView() override;

private:
    class Private;
    const std::unique_ptr<Private> d;
};
