#include <Brevanti/platform/TableViewCell.h>

#include <QMouseEvent>
#include <QPaintEvent>
#include <QPainter>

namespace bvt {

namespace {

constexpr int defaultAccessoryMargin = 15;

QColor selectedBackground()
{
    return QColor::fromRgbF(0.85, 0.85, 0.85);
}

} // namespace

class TableViewCell::Private
{
public:
    Private(const QString &reuseIdentifier, TableViewCell *cell)
        : cell(cell), reuseIdentifier(reuseIdentifier), contentView(new QWidget(cell))
    { }

    void layoutAccessory();

    TableViewCell *const cell;
    const QString reuseIdentifier;
    QColor background = Qt::white;
    QWidget *const contentView;
    QWidget *accessoryView = nullptr;
    SelectionStyle selectionStyle = SelectionStyle::Default;
    QMargins layoutMargins;
    bool selected = false;
};

void TableViewCell::Private::layoutAccessory()
{
    int contentWidth = cell->width();
    if (accessoryView) {
        const int margin =
                layoutMargins.right() > 0 ? layoutMargins.right() : defaultAccessoryMargin;
        const QSize size = accessoryView->sizeHint();
        const int x = cell->width() - margin - size.width();
        accessoryView->setGeometry(x, (cell->height() - size.height()) / 2, size.width(),
                                   size.height());
        contentWidth = qMax(0, x);
    }
    contentView->setGeometry(0, 0, contentWidth, cell->height());
}

TableViewCell::TableViewCell(Style style, const QString &reuseIdentifier, QWidget *parent)
    : QWidget(parent), d(std::make_unique<Private>(reuseIdentifier, this))
{
    Q_UNUSED(style); // both styles look alike here: the screens fill the content view themselves
    d->layoutAccessory();
}

TableViewCell::~TableViewCell() = default;

QString TableViewCell::reuseIdentifier() const
{
    return d->reuseIdentifier;
}

QWidget *TableViewCell::contentView() const
{
    return d->contentView;
}

QWidget *TableViewCell::accessoryView() const
{
    return d->accessoryView;
}

void TableViewCell::setAccessoryView(QWidget *view)
{
    if (view == d->accessoryView)
        return;
    if (d->accessoryView) {
        // Later, not now: the old accessory may be the very control whose signal got us here.
        d->accessoryView->hide();
        d->accessoryView->deleteLater();
    }
    d->accessoryView = view;
    if (view) {
        view->setParent(this);
        view->show();
    }
    d->layoutAccessory();
}

TableViewCell::SelectionStyle TableViewCell::selectionStyle() const
{
    return d->selectionStyle;
}

QColor TableViewCell::backgroundColor() const
{
    return d->background;
}

void TableViewCell::setBackgroundColor(const QColor &color)
{
    d->background = color;
    update();
}

void TableViewCell::setSelectionStyle(SelectionStyle style)
{
    d->selectionStyle = style;
    update();
}

QMargins TableViewCell::layoutMargins() const
{
    return d->layoutMargins;
}

void TableViewCell::setLayoutMargins(const QMargins &margins)
{
    d->layoutMargins = margins;
    d->layoutAccessory();
}

bool TableViewCell::isSelected() const
{
    return d->selected;
}

void TableViewCell::setSelected(bool selected)
{
    if (selected == d->selected)
        return;
    d->selected = selected;
    update();
}

void TableViewCell::mouseReleaseEvent(QMouseEvent *event)
{
    // A child control that took the press also takes the release, so only the cell's own
    // surface (and passive children such as labels) gets here.
    if (event->button() == Qt::LeftButton && rect().contains(event->position().toPoint())) {
        event->accept();
        emit tapped();
        return;
    }
    QWidget::mouseReleaseEvent(event);
}

void TableViewCell::paintEvent(QPaintEvent *event)
{
    QPainter painter(this);
    const bool highlighted = d->selected && d->selectionStyle == SelectionStyle::Default;
    painter.fillRect(event->rect(), highlighted ? selectedBackground() : d->background);
}

void TableViewCell::resizeEvent(QResizeEvent *)
{
    d->layoutAccessory();
}

} // namespace bvt
