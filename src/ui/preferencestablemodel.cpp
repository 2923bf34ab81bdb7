// The table side of the preferences screen: sections from categories, rows from preferences, and
// what a flipped switch sends.
#include <Brevanti/BVTNotify.h>
#include <Brevanti/BVTNotifyPreferencesViewController.h>

#include "core/integervalue.h"
#include "core/log.h"
#include "core/logging.h"
#include "preferencesstyle.h"

#include <QEvent>
#include <QLabel>
#include <QPainter>
#include <QtMath>

#include <stdexcept>

namespace {

// A document's text member as shown: text as it is, a number as its decimal text, else absent.
QString textOf(const QVariant &value)
{
    switch (value.typeId()) {
    case QMetaType::QString:
        return value.toString();
    case QMetaType::Double:
    case QMetaType::LongLong:
    case QMetaType::Int:
    case QMetaType::Bool:
        return bvt::describe(value);
    default:
        return QString();
    }
}

// Only a real list counts: QVariant would turn a string into a list of its characters.
QVariantList preferencesOf(const QVariant &category)
{
    const QVariant preferences = category.toMap().value(QStringLiteral("preferences"));
    return preferences.typeId() == QMetaType::QVariantList ? preferences.toList() : QVariantList();
}

// A line just below a widget, across its width, over whatever lies there. A child would be clipped
// to the widget, so the line is its sibling: it follows the widget into its parent, keeps to the
// widget's place and visibility, stays above siblings added later and goes with the widget.
class LineBelow : public QWidget
{
public:
    LineBelow(QWidget *owner, const QColor &color, qreal thickness)
        : m_owner(owner), m_color(color), m_thickness(thickness)
    {
        setAttribute(Qt::WA_TransparentForMouseEvents);
        hide();
        owner->installEventFilter(this);
        connect(owner, &QObject::destroyed, this, &QObject::deleteLater);
    }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (watched != m_owner) {
            if (event->type() == QEvent::ChildAdded)
                raise();
            return false;
        }
        switch (event->type()) {
        case QEvent::ParentChange:
            if (parentWidget())
                parentWidget()->removeEventFilter(this);
            setParent(m_owner->parentWidget());
            if (parentWidget())
                parentWidget()->installEventFilter(this);
            break;
        case QEvent::Move:
        case QEvent::Resize:
            follow();
            break;
        case QEvent::Show:
            follow();
            show();
            raise();
            break;
        case QEvent::Hide:
            hide();
            break;
        default:
            break;
        }
        return false;
    }

    // Thinner than a pixel, the line is blended with what lies beneath it.
    void paintEvent(QPaintEvent *) override
    {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.fillRect(QRectF(0, 0, width(), m_thickness), m_color);
    }

private:
    void follow()
    {
        setGeometry(m_owner->x(), m_owner->y() + m_owner->height(), m_owner->width(),
                    qCeil(m_thickness));
    }

    QWidget *m_owner;
    QColor m_color;
    qreal m_thickness;
};

} // namespace

void BVTNotifyPreferencesViewController::loadTableWithData(const QVariantList &data)
{
    m_tableData.append(data);
    m_tableView->reloadData();
    relayoutTable();
}

int BVTNotifyPreferencesViewController::numberOfSectionsInTableView(bvt::TableView *)
{
    return int(m_tableData.size());
}

int BVTNotifyPreferencesViewController::numberOfRowsInSection(bvt::TableView *, int section)
{
    return int(preferencesOf(m_tableData.value(section)).size());
}

bvt::TableViewCell *
BVTNotifyPreferencesViewController::cellForRowAtIndexPath(bvt::TableView *tableView,
                                                          const bvt::IndexPath &indexPath)
{
    // A reused cell is handed back as it is, still showing the row it was built for.
    if (bvt::TableViewCell *reused = tableView->dequeueReusableCellWithIdentifier(cellIdentifier))
        return reused;

    const QVariantMap category = m_tableData.value(indexPath.section).toMap();
    const QVariantMap preference = preferencesOf(category).value(indexPath.row).toMap();

    auto *cell = new bvt::TableViewCell(bvt::TableViewCell::Style::Subtitle, cellIdentifier);
    cell->setSelectionStyle(bvt::TableViewCell::SelectionStyle::None);
    cell->setLayoutMargins(bvt::preferences::margins);

    auto *label = new QLabel(cell->contentView());
    label->setGeometry(bvt::preferences::cellLabelFrame);
    label->setFont(bvt::preferences::boldFont());
    label->setText(textOf(preference.value(QStringLiteral("name"))));
    label->setAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    bvt::preferences::setTextColor(label, bvt::preferences::cellTextColor);

    auto *toggle = new BVTNotifySwitch;
    toggle->setCategory(textOf(category.value(QStringLiteral("key"))));
    toggle->setPreference(textOf(preference.value(QStringLiteral("key"))));
    toggle->setOnTintColor(bvt::preferences::switchOnTint);
    toggle->setAccessibleName(label->text());
    cell->setAccessoryView(toggle);
    toggle->setOn(bvt::integerValue(preference.value(QStringLiteral("enabled"))) != 0, false);
    connect(toggle, &BVTNotifySwitch::valueChanged, this,
            [this, toggle] { switchChanged(toggle); });
    return cell;
}

QWidget *BVTNotifyPreferencesViewController::viewForHeaderInSection(bvt::TableView *tableView,
                                                                    int section)
{
    const int width = tableView->width();
    auto *header = new QWidget;
    header->setGeometry(0, 0, width, int(headerHeight));
    bvt::preferences::setBackgroundColor(header, bvt::preferences::headerBackground);

    auto *label = new QLabel(header);
    label->setGeometry(bvt::preferences::headerLabelLeft, bvt::preferences::headerLabelTop, width,
                       bvt::preferences::headerLabelHeight);
    label->setFont(bvt::preferences::boldFont());
    bvt::preferences::setTextColor(label, bvt::preferences::headerTextColor);
    label->setText(textOf(m_tableData.value(section).toMap().value(QStringLiteral("name"))));

    // Along the header's lower edge, just outside it, over the top of the section's first row.
    new LineBelow(header, bvt::preferences::hairlineColor, bvt::preferences::hairlineThickness);
    return header;
}

double BVTNotifyPreferencesViewController::heightForHeaderInSection(bvt::TableView *, int)
{
    return headerHeight;
}

double BVTNotifyPreferencesViewController::heightForRowAtIndexPath(bvt::TableView *,
                                                                   const bvt::IndexPath &)
{
    return rowHeight;
}

double BVTNotifyPreferencesViewController::heightForFooterInSection(bvt::TableView *, int)
{
    return footerHeight;
}

void BVTNotifyPreferencesViewController::didSelectRowAtIndexPath(bvt::TableView *tableView,
                                                                 const bvt::IndexPath &indexPath)
{
    tableView->deselectRowAtIndexPath(indexPath, false);
}

void BVTNotifyPreferencesViewController::switchChanged(BVTNotifySwitch *sender)
{
    bvt::log("The switch is %@", sender->isOn() ? "ON" : "OFF");
    bvt::log("The switch is for %@:%@", sender->category(), sender->preference());
    try {
        if (sender->isOn())
            BVTNotify::enablePreferenceWithCategory(sender->category(), sender->preference());
        else
            BVTNotify::disablePreferenceWithCategory(sender->category(), sender->preference());
    } catch (const std::invalid_argument &error) {
        // A row whose document lacked a key: nothing can be sent for it, and an exception must
        // not cross Qt's event loop.
        qCWarning(bvt::lcUi) << "switch not sent:" << error.what();
    }
}
