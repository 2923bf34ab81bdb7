#pragma once

/// \file
/// bvt::NavigationBar, the bar over a navigation stack or a popup card.

#include <Brevanti/brevanti_widgets_export.h>

#include <Brevanti/platform/NavigationItem.h>

#include <QColor>
#include <QFont>
#include <QWidget>

#include <memory>

class QLabel;
class QToolButton;

namespace bvt {

/// A bar with a centred title and a right-hand button, for navigation controllers and popup cards.
class BREVANTI_WIDGETS_EXPORT NavigationBar : public QWidget
{
    Q_OBJECT
public:
    static constexpr int height = 44; ///< the bar's fixed height

    /// A white bar with a bold title and no button.
    explicit NavigationBar(QWidget *parent = nullptr);
    ~NavigationBar() override;

    void setItem(const NavigationItem &item); ///< title and right button of the top controller
    /// The title shown.
    QString title() const;
    QToolButton *rightButton() const; ///< hidden when the item has none
    /// The back button on the left: a chevron and title, which is the previous controller's title,
    /// or "Back" when it has none; a null title hides it.
    void setBackTitle(const QString &title);
    QToolButton *backButton() const; ///< hidden until setBackTitle gives it a title

    void setBarTintColor(const QColor &color); ///< background
    void setTintColor(const QColor &color);    ///< button text
    /// The title's font and colour; bold 17 pixels and black by default.
    ///@{
    void setTitleFont(const QFont &font);
    void setTitleColor(const QColor &color);
    ///@}

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    class Private;
    const std::unique_ptr<Private> d;
};

} // namespace bvt
