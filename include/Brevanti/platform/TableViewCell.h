#pragma once

/// \file
/// bvt::TableViewCell, one row's widget.

#include <Brevanti/brevanti_widgets_export.h>

#include <QColor>
#include <QMargins>
#include <QString>
#include <QWidget>

#include <memory>

namespace bvt {

/// One row's widget. Cells are reused: a cell scrolled out of sight goes back to the table's pool
/// and dequeueReusableCellWithIdentifier hands it out again exactly as it is.
class BREVANTI_WIDGETS_EXPORT TableViewCell : public QWidget
{
    Q_OBJECT
public:
    /// The cell's layout; both look alike here, as the screens fill the content view themselves.
    enum class Style {
        Default, ///< a title
        Subtitle ///< a title over a subtitle
    };
    /// How a selected cell shows it.
    enum class SelectionStyle {
        None,   ///< not at all
        Default ///< on a grey background
    };

    /// A white cell with an empty content view, to be found again by its reuse identifier.
    TableViewCell(Style style, const QString &reuseIdentifier, QWidget *parent = nullptr);
    ~TableViewCell() override;

    /// The identifier the table pools the cell under.
    QString reuseIdentifier() const;
    QWidget *contentView() const; ///< fills the cell but for the accessory
    /// The widget at the cell's right (a switch, say); null for none.
    QWidget *accessoryView() const;
    void setAccessoryView(QWidget *view); ///< takes ownership; right-aligned, vertically centred
    /// The cell's background while it is not highlighted; white by default.
    ///@{
    QColor backgroundColor() const;
    void setBackgroundColor(const QColor &color);
    ///@}
    /// How a selected cell shows it; Default by default.
    ///@{
    SelectionStyle selectionStyle() const;
    void setSelectionStyle(SelectionStyle style);
    ///@}
    /// The right margin places the accessory view (15 pixels while it is 0).
    ///@{
    QMargins layoutMargins() const;
    void setLayoutMargins(const QMargins &margins);
    ///@}
    /// Whether the cell shows as selected; the table sets it.
    ///@{
    bool isSelected() const;
    void setSelected(bool selected);
    ///@}

Q_SIGNALS:
    void tapped(); ///< a click on the cell itself, not on a child control

protected:
    void mouseReleaseEvent(QMouseEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    class Private;
    const std::unique_ptr<Private> d;
};

} // namespace bvt
