#pragma once

#include <Brevanti/brevanti_widgets_export.h>

#include <QMargins>
#include <QString>
#include <QWidget>

#include <memory>

namespace bvt {

// One row's widget. Cells are reused: a cell scrolled out of sight goes back to the table's pool
// and dequeueReusableCellWithIdentifier hands it out again exactly as it is.
class BREVANTI_WIDGETS_EXPORT TableViewCell : public QWidget
{
    Q_OBJECT
public:
    enum class Style { Default, Subtitle };
    enum class SelectionStyle { None, Default };

    TableViewCell(Style style, const QString &reuseIdentifier, QWidget *parent = nullptr);
    ~TableViewCell() override;

    QString reuseIdentifier() const;
    QWidget *contentView() const; // fills the cell but for the accessory
    QWidget *accessoryView() const;
    void setAccessoryView(QWidget *view); // takes ownership; right-aligned, vertically centred
    SelectionStyle selectionStyle() const;
    void setSelectionStyle(SelectionStyle style);
    QMargins layoutMargins() const;
    void setLayoutMargins(const QMargins &margins);
    bool isSelected() const;
    void setSelected(bool selected);

Q_SIGNALS:
    void tapped(); // a click on the cell itself, not on a child control

protected:
    void mouseReleaseEvent(QMouseEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    class Private;

    void layoutAccessory();

    const std::unique_ptr<Private> d;
};

} // namespace bvt
