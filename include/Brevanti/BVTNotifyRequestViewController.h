#pragma once

#include <Brevanti/brevanti_widgets_export.h>

#include <Brevanti/platform/ViewController.h>

#include <QColor>
#include <QPixmap>
#include <QString>

#include <memory>

class QLabel;
class QPushButton;

// The card that asks the user to keep up to date, before the system's own permission prompt:
// "Keep Me Updated" asks for push permission, "Customize Notifications" opens the preferences
// screen in the same card, "No Thanks" closes it. Its controls come from the interface file
// "BVTNotifyRequestViewController" (resources/); the code gives them colours and texts each time
// the card is about to appear. Shown by BVTNotify::requestCustomPreferences.
class BREVANTI_WIDGETS_EXPORT BVTNotifyRequestViewController : public bvt::ViewController
{
    Q_OBJECT
public:
    BVTNotifyRequestViewController(); // the four defaults of BVTNotify
    BVTNotifyRequestViewController(const QColor &color, const QPixmap &icon, const QString &header,
                                   const QString &subHeader);
    ~BVTNotifyRequestViewController() override;

    QColor popupColor() const;
    void setPopupColor(const QColor &color);
    QPixmap popupIcon() const; // kept, deliberately not shown: the icon view keeps its own image
    void setPopupIcon(const QPixmap &icon);
    QString popupHeader() const;
    void setPopupHeader(const QString &header);
    QString popupSubHeader() const;
    void setPopupSubHeader(const QString &subHeader);

    // The outlets, set when the view loads.
    QLabel *alertIcon() const;
    QLabel *headerLabel() const;
    QLabel *subheaderLabel() const;
    QPushButton *keepMeUpdatedButton() const;
    QPushButton *customizeButton() const;
    QPushButton *noThanksButton() const;

    void viewWillAppear(bool animated) override;

    void keepMeUpdatedButtonTapped();
    void customizeButtonTapped();
    void noThanksButtonTapped();
    void didClickDone();

    static constexpr int permissionDelayMs = 100; // lets the card leave before the system prompt

protected:
    void loadView() override;

private:
    class Private;
    const std::unique_ptr<Private> d;
};
