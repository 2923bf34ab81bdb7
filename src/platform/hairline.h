#pragma once

#include <QColor>
#include <QMargins>
#include <QWidget>

namespace bvt {

// A line along a widget's lower edge, over whatever lies there. A child would be clipped to the
// widget and painted under its later siblings, so the line is the widget's sibling instead: it
// follows the widget into its parent, keeps to its place and visibility, stays above siblings added
// later, lets the mouse through and goes with the widget.
class Hairline : public QWidget
{
public:
    // Where the line lies against its owner's lower edge.
    enum class Placement {
        Inside, // on the owner's last rows of pixels
        Outside // just below the owner
    };

    // Thinner than a pixel, the line is blended with what lies beneath it.
    Hairline(QWidget *owner, const QColor &color, qreal thickness, Placement placement);

    // How far the line keeps from the owner's left and right edges; none by default.
    void setInset(const QMargins &inset);
    // A suppressed line stays hidden, whatever its owner does.
    void setSuppressed(bool suppressed);
    void setColor(const QColor &color);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    void adoptParent();
    void follow();
    void showWithOwner();

    QWidget *const m_owner;
    QColor m_color;
    const qreal m_thickness;
    const Placement m_placement;
    QMargins m_inset;
    bool m_suppressed = false;
};

} // namespace bvt
